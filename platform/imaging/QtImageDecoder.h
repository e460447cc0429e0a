#pragma once

#include "Bitmap.h"
#include "Result.h"

#include <QByteArray>

/// Decodes PNG, TIFF and what else Qt's image plugins read. Any thread, several at once.
namespace QtImageDecoder
{

/// 16 bits where the file has them; the ICC profile converted to sRGB; transparent places white;
/// orientation tags not applied. A file that ends before its picture does is an error.
/// Errors: Damaged, Unsupported, OutOfSpace; they name no file.
[[nodiscard]] Result<Bitmap> decode(const QByteArray& bytes);

} // namespace QtImageDecoder
