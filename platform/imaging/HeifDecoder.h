#pragma once

#include "Bitmap.h"
#include "Result.h"

#include <QByteArray>
#include <QImage>
#include <QSize>

#include <optional>

/// Decodes HEIC files and their relatives with libheif. Any thread, several at once.
///
/// Pictures lie as they are to be shown: crop, turns and mirroring that the file states are part
/// of the picture (ISO/IEC 23008-12, 6.5), and the orientation tag of its Exif block is not.
namespace HeifDecoder
{

/// The primary picture, 16 bits where the file has more than 8; its colours converted to sRGB,
/// transparent places white. Whatever libheif complains of is damage.
/// Errors: Damaged, Unsupported, OutOfSpace; they name no file.
[[nodiscard]] Result<Bitmap> decode(const QByteArray& bytes);

/// The primary picture's thumbnail; nothing where there is none that decodes.
[[nodiscard]] std::optional<QImage> thumbnail(const QByteArray& bytes);

/// The size that decode() gives; nothing where the file does not say it.
[[nodiscard]] std::optional<QSize> size(const QByteArray& bytes);

} // namespace HeifDecoder
