#pragma once

#include "Bitmap.h"
#include "Result.h"

#include <QByteArrayView>
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

/// The size that the header states; nothing where the bytes are no JPEG file.
[[nodiscard]] std::optional<QSize> size(QByteArrayView bytes);

/// The largest root mean square error, in levels of 0..255, that the file's quantisation can give
/// the lightness of a block: half a step of every coefficient (the transform keeps lengths, ITU-T
/// T.81, A.3.3). 0 where the bytes are no JPEG file.
[[nodiscard]] double quantisationError(QByteArrayView bytes);

} // namespace JpegDecoder
