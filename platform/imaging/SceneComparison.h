#pragma once

#include "Bitmap.h"
#include "SmallPicture.h"

#include <QImage>
#include <QString>

#include <optional>

/// Tells whether pictures show the same scene, and garbage from pictures. Any thread.
namespace SceneComparison
{

/// Whether the picture is large and varied enough to show a scene: neither flat nor noise.
[[nodiscard]] bool isStructured(const SmallPicture& picture);

/// Rank correlation of lightness, -1..1: of the four turns and of the ways to fit one picture's
/// shape into the other's (previews have black bars, or leave the sides out) the best.
[[nodiscard]] double likeness(const SmallPicture& first, const SmallPicture& second);

/// What a picture's colours are compared by.
struct Views {
    SmallPicture lightness;
    SmallPicture redBlue;
    SmallPicture greenMagenta;

    [[nodiscard]] static Views of(const Bitmap& bitmap);
    [[nodiscard]] static Views of(const QImage& image);
};

/// Whether a picture that shows the same scene as `shown` has its colours wrong: far off on the
/// whole, or exchanged. False where `shown` is in black and white, or toned in one colour.
[[nodiscard]] bool hasOtherColors(const Views& picture, const Views& shown);

/// Whether the pixels are unrelated to their neighbours, as after decoding corrupt data. The noise
/// of a dark frame and the stars of a night sky are none.
[[nodiscard]] bool isNoise(const Bitmap& bitmap);

/// A clause that says what is wrong with a decoded picture, judged by the file's own preview where
/// that shows a scene, else by itself; nothing where it may be right.
[[nodiscard]] std::optional<QString> complaint(const Bitmap& decoded,
                                               const std::optional<QImage>& preview);

/// The same by a thumbnail that was made of the very picture, as HEIF files have one: also a clause
/// where only places differ. Nothing where the thumbnail shows no scene, or another.
[[nodiscard]] std::optional<QString> thumbnailComplaint(const Bitmap& decoded,
                                                        const QImage& thumbnail);

} // namespace SceneComparison
