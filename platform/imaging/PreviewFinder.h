#pragma once

#include "Preview.h"
#include "SmallPicture.h"

#include <QByteArray>
#include <QImage>

#include <functional>
#include <optional>

/// The previews inside RAW files, and in Exif blocks. Any thread.
namespace PreviewFinder
{

/// Pixels. Enough for what previews are looked at for; fewer would show in the colours that are
/// fitted.
inline constexpr int kLongestSide = 1024;

/// Whether a preview, whose lightness is `shown`, is what is looked for.
using Predicate = std::function<bool(const QImage& preview, const SmallPicture& shown)>;

/// The predicate that holds for any preview.
[[nodiscard]] inline bool isAny(const QImage& /*preview*/, const SmallPicture& /*shown*/)
{
    return true;
}

/// The largest preview that is wanted, as it lies in the file, of those that decode whole and show
/// something; where none of the six largest is wanted, the largest; nothing where there is none.
/// Looked for where LibRaw knows of one and in the file's own TIFF directories. A large one is
/// averaged down, to no less than kLongestSide. `isWanted` is asked of the largest first, and of
/// none after it held.
[[nodiscard]] std::optional<Preview> largest(const QByteArray& bytes, const Predicate& isWanted);

/// A preview that is a JPEG file, averaged down like others, as it lies there; null where not all
/// of it decodes without complaint.
[[nodiscard]] QImage reduced(QByteArrayView jpeg);

/// The thumbnail of an Exif block (a TIFF structure); nothing where there is none that decodes, or
/// where the block is not of a picture of `size`: what changed the size left an old one behind.
[[nodiscard]] std::optional<QImage> thumbnail(QByteArrayView exif, QSize size);

} // namespace PreviewFinder
