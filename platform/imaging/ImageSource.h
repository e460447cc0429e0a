#pragma once

#include "Bitmap.h"
#include "ImageProperties.h"
#include "Result.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <optional>

/// Decoders of all supported picture types: RAW through LibRaw, JPEG through libjpeg-turbo, HEIC
/// through libheif, PNG, TIFF and the rest through Qt. Pixels lie as the file stores them (the
/// sensor's rows for RAW); orientation tags are not applied. The type is recognised by content.
///
/// RAW: camera white balance, sRGB primaries, 16 bits linear, no automatic brightness, highlights
/// clipped; size is the camera's own crop where the metadata states one, else LibRaw's visible
/// area. Other types: their ICC profile converted to sRGB.
///
/// Damage is an error, never a picture: data errors reported by a library, truncated strips, a
/// file shorter than its own offsets say, and a decode that yields noise or nothing where the
/// embedded preview shows a scene.
///
/// All functions: any thread, several at once. Deterministic. Errors name the file: NotFound,
/// Unreadable, Unsupported, Damaged, OutOfSpace (memory).
namespace ImageSource
{

/// Extensions without dot of all readable types, each in lower and in upper case, sorted.
[[nodiscard]] const QStringList& readableExtensions();

[[nodiscard]] Result<Bitmap> decode(const QString& path);

/// The largest preview that the file itself embeds (RAW files), as stored, not turned; nothing
/// where it has none that decodes.
[[nodiscard]] std::optional<QImage> embeddedPreview(const QString& path);

/// Whether the file decodes to its last row: decode() without the picture.
[[nodiscard]] Result<void> check(const QString& path);

} // namespace ImageSource
