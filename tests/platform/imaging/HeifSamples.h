#pragma once

#include "Bitmap.h"

#include <QByteArray>

/// HEIF files of the tests' own making, by the encoder that Debian's libheif always comes with.
namespace HeifSamples
{

struct Options {
    int orientation{1}; ///< as turns and mirroring of the file, in the numbers of Exif
    int bits{8};        ///< 8, or 10 (without transparency)
    int alpha{-1};      ///< 0..255 of all pixels; no transparency if -1
    int primaries{0};   ///< ISO/IEC 23091-2; no colours stated if 0
    int transfer{0};
    QByteArray exif{}; ///< a TIFF structure; none if empty
    QByteArray icc{};
    Bitmap thumbnail{}; ///< twice as large as the file will hold it; none if null
};

/// A HEIC file of the picture (sRGB encoded values), nearly without loss. A failure is a test
/// failure and yields no bytes.
[[nodiscard]] QByteArray file(const Bitmap& bitmap, const Options& options = {});

} // namespace HeifSamples
