#pragma once

#include "Bitmap.h"
#include "Result.h"

#include <QByteArray>

/// Decodes HEIC files and their relatives with libheif. Any thread, several at once.
namespace HeifDecoder
{

/// The primary picture as it is stored, rotation and mirroring not applied; the ICC profile
/// converted to sRGB. Errors: Damaged, Unsupported, OutOfSpace; they name no file.
[[nodiscard]] Result<Bitmap> decode(const QByteArray& bytes);

} // namespace HeifDecoder
