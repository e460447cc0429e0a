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

/// Whether the pixels are unrelated to their neighbours, as after decoding corrupt data.
[[nodiscard]] bool isNoise(const Bitmap& bitmap);

/// A clause that says what is wrong with a decoded picture, judged by the file's own preview where
/// that shows a scene, else by itself; nothing where it may be right.
[[nodiscard]] std::optional<QString> complaint(const Bitmap& decoded,
                                               const std::optional<QImage>& preview);

} // namespace SceneComparison
