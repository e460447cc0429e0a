#pragma once

#include "Bitmap.h"
#include "Result.h"

#include <QByteArray>
#include <QImage>

#include <optional>

/// Decodes RAW files with LibRaw. Any thread, several at once; deterministic.
namespace RawDecoder
{

/// Camera white balance, sRGB primaries, 16 bits linear, as the sensor's rows lie. The size is the
/// camera's own crop where the metadata states where it lies, else LibRaw's visible area. Data that
/// LibRaw complains of are an error.
/// Errors: Damaged, Unsupported, OutOfSpace; they name no file.
[[nodiscard]] Result<Bitmap> decode(const QByteArray& bytes);

/// The preview that LibRaw finds the largest, as stored; nothing where it has none that decodes.
[[nodiscard]] std::optional<QImage> preview(const QByteArray& bytes);

} // namespace RawDecoder
