#pragma once

#include "Bitmap.h"
#include "SmallPicture.h"

#include <QImage>
#include <QString>

#include <optional>
#include <vector>

/// Tells damage by what a picture's file shows of it beside it. Any thread.
namespace PictureDamage
{

/// A clause that says what is wrong with a decoded picture, judged by a preview of it, which
/// `shown` is the lightness of; nothing where it may be right, where the preview shows nothing, or
/// another scene. A preview of another scene tells damage only where large parts of the picture are
/// empty; one in black and white, whose filter may lighten any colour, where they are.
[[nodiscard]] std::optional<QString>
complaint(const SmallPicture& decoded, const SmallPicture& shown, const QImage& preview);

/// Whether all breaks in the picture's rows, at `places` (0..1 of the height, from the top), are
/// edges of the scene: such in what is shown, too. False where the two do not show the same, and
/// for those that lie beyond what is shown.
[[nodiscard]] bool areEdgesOfScene(const std::vector<double>& places,
                                   const SmallPicture& decoded,
                                   const SmallPicture& shown);

/// The same as complaint() by a thumbnail that was made of the very picture, as HEIF files have
/// one: also a clause where only the lightness of places differs.
[[nodiscard]] std::optional<QString> thumbnailComplaint(const SmallPicture& decoded,
                                                        const SmallPicture& shown);

/// The same of a picture that was finished before, as in a JPEG file: a program may have changed it
/// since. Where only one of the two is in black and white, only what is lost tells damage.
[[nodiscard]] std::optional<QString> complaintOfFinished(const Bitmap& decoded,
                                                         const QImage& preview);

/// The same by the thumbnail in a JPEG file's Exif block, which programs that change the picture
/// leave as it was; the clause says so, and what to do.
[[nodiscard]] std::optional<QString> exifThumbnailComplaint(const Bitmap& decoded,
                                                            const QImage& thumbnail);

} // namespace PictureDamage
