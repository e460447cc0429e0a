#pragma once

#include "Bitmap.h"
#include "Result.h"

#include <QByteArrayView>
#include <QImage>
#include <QSize>

#include <optional>

/// Decodes JPEG files with libjpeg-turbo. Any thread, several at once.
namespace JpegDecoder
{

/// Decodes to the last row; grey, YCbCr, RGB, CMYK and YCCK; the ICC profile, or Adobe RGB where
/// only the Exif block says so, converted to sRGB (sRGB assumed where nothing is said). Anything
/// that libjpeg had to guess (an early end, a bad code, missing rows) is an error. Errors: Damaged,
/// Unsupported, OutOfSpace; clauses that name no file.
[[nodiscard]] Result<Bitmap> decode(QByteArrayView bytes);

/// The same in 8 bits (Format_RGB888), the pixels averaged over squares of `denominator` (1, 2, 4
/// or 8) a side, where squares at the right and lower ends may be cut. All data are read and judged
/// as by decode(). It has the colour space sRGB where the file tells of its colours, none where
/// they are only taken for sRGB. Errors as there.
[[nodiscard]] Result<QImage> decodeReduced(QByteArrayView bytes, int denominator);

/// The largest denominator for which a picture of `size` keeps at least `longestSide` pixels on its
/// longest side, or 1.
[[nodiscard]] int denominatorFor(QSize size, int longestSide);

/// The size that the header states; nothing where the bytes are no JPEG file.
[[nodiscard]] std::optional<QSize> size(QByteArrayView bytes);

/// The largest error, in levels of 0..255, that the file's quantisation can give the mean lightness
/// of a block of 8 x 8 pixels: half a step of the first coefficient, which is eight times that mean
/// (ITU-T T.81, A.3.3). 0 where the bytes are no JPEG file.
[[nodiscard]] double meanError(QByteArrayView bytes);

} // namespace JpegDecoder
