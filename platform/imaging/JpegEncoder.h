#pragma once

#include "Bitmap.h"
#include "JpegSegment.h"
#include "Result.h"

#include <QByteArray>
#include <QImage>
#include <QList>

/// The encoding itself, with libjpeg-turbo. Any thread, several at once.
namespace JpegEncoder
{

/// Order of the coefficients in the file.
enum class Scans : quint8 {
    Progressive, ///< smaller
    Sequential,  ///< baseline, which Exif asks of thumbnails (CIPA DC-008)
};

/// Resolution of the colour difference planes against the lightness plane.
enum class Chroma : quint8 {
    Full,    ///< 4:4:4
    Quarter, ///< 4:2:0
};

struct Options {
    int quality{90}; ///< libjpeg's, 1..100
    Chroma chroma{Chroma::Quarter};
    Scans scans{Scans::Progressive};
    /// Written before the picture in this order; where there are any, the JFIF segment is left
    /// out, since Exif wants to come first (CIPA DC-008).
    QList<JpegSegment> segments;
    QByteArray iccProfile; ///< an empty one is left out
};

/// The libjpeg quality of a quality 0..1: rounded, at least 1, at most 100.
[[nodiscard]] int libjpegQuality(double quality);

/// With Huffman tables made for this picture (Format_RGB888, sRGB encoded).
/// Errors: Internal (segments too long, no sides or sides above 65500), OutOfSpace.
[[nodiscard]] Result<QByteArray> encode(const QImage& picture, const Options& options);

/// The same of a picture that is rounded to 8 bits first.
[[nodiscard]] Result<QByteArray> encode(const Bitmap& bitmap, const Options& options);

} // namespace JpegEncoder
