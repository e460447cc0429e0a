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
/// sensor's rows for RAW); orientation tags are not applied. HEIC pictures lie as they are to be
/// shown, since their file's turns are part of them; ImageProperties says so, too. The type is
/// recognised by content.
///
/// RAW: camera white balance, sRGB primaries, 16 bits linear, no automatic brightness, highlights
/// clipped; size is the camera's own crop where the metadata states one, else LibRaw's visible
/// area. Other types: their colours converted to sRGB.
///
/// Damage is an error, never a picture: data errors reported by a library, truncated strips, a
/// file shorter than its own offsets say, a decode that yields noise or nothing where the embedded
/// preview (RAW, HEIC) or the Exif thumbnail (JPEG) shows a scene, noise (RAW, HEIC, TIFF), and
/// large parts without any (RAW).
///
/// All functions: any thread, several at once. Deterministic. Errors name the file: NotFound,
/// Unreadable, Unsupported, Damaged, OutOfSpace (memory).
namespace ImageSource
{

/// Extensions without dot of all readable types, each in lower and in upper case, sorted.
[[nodiscard]] const QStringList& readableExtensions();

[[nodiscard]] Result<Bitmap> decode(const QString& path);

/// The largest preview that a RAW file embeds, as stored, not turned; the thumbnail of a HEIC
/// file, as it is to be shown. Nothing where there is none that decodes.
[[nodiscard]] std::optional<QImage> embeddedPreview(const QString& path);

/// Whether the file decodes to its last row: decode() without the picture.
[[nodiscard]] Result<void> check(const QString& path);

} // namespace ImageSource
