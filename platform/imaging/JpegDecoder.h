#pragma once

#include "Bitmap.h"
#include "Result.h"

#include <QByteArrayView>
#include <QSize>

#include <optional>

/// Decodes JPEG files with libjpeg-turbo. Any thread, several at once.
namespace JpegDecoder
{

/// Decodes to the last row; grey, YCbCr, RGB, CMYK and YCCK; the ICC profile converted to sRGB
/// (sRGB assumed where there is none). Anything that libjpeg had to guess (an early end, a bad
/// code, missing rows) is an error. Errors: Damaged, Unsupported, OutOfSpace; they name no file.
[[nodiscard]] Result<Bitmap> decode(QByteArrayView bytes);

/// The size that the header states; nothing where the bytes are no JPEG file.
[[nodiscard]] std::optional<QSize> size(QByteArrayView bytes);

} // namespace JpegDecoder
