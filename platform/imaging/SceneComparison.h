#pragma once

#include "Bitmap.h"
#include "SmallPicture.h"

#include <QImage>
#include <QRectF>

#include <utility>
#include <vector>

/// Tells whether pictures show the same scene, in the same colours. Any thread.
namespace SceneComparison
{

/// Whether the picture is large and varied enough to show a scene: neither flat nor noise.
[[nodiscard]] bool isStructured(const SmallPicture& picture);

/// From this likeness on two pictures show the same scene. Measured on 300 pairs: the same scene
/// 0.92 and more however it was rendered, different ones 0.73 and less.
inline constexpr double kSameScene = 0.85;

/// How one picture is laid over another: `turns` quarter turns clockwise of the second, and then
/// the part of each that is compared, in fractions of the sides.
struct Overlay {
    int turns{0};
    QRectF first{0.0, 0.0, 1.0, 1.0};
    QRectF second{0.0, 0.0, 1.0, 1.0};
};

/// An overlay, and the rank correlation of lightness in it, -1..1.
struct Match {
    Overlay overlay;
    double likeness{-1.0};
};

/// The four turns, as far as the shapes allow, and the ways to fit one picture's shape into the
/// other's (previews have black bars, or leave the sides out).
[[nodiscard]] std::vector<Overlay> overlays(const SmallPicture& first, const SmallPicture& second);

/// The values of both pictures at the same places, a grid of them.
[[nodiscard]] std::pair<SmallPicture, SmallPicture>
laidOver(const SmallPicture& first, const SmallPicture& second, const Overlay& overlay, QSize grid);

/// Of the overlays the one in which the pictures are most alike.
[[nodiscard]] Match bestMatch(const SmallPicture& first, const SmallPicture& second);

/// The likeness of the best match.
[[nodiscard]] double likeness(const SmallPicture& first, const SmallPicture& second);

/// What a picture's colours are compared by.
struct Views {
    SmallPicture lightness;
    SmallPicture redBlue;
    SmallPicture greenMagenta;

    [[nodiscard]] static Views of(const Bitmap& bitmap);
    [[nodiscard]] static Views of(const QImage& image);
};

/// Whether the colour nearly depends on lightness alone, as in black and white pictures and toned
/// ones, but also in those of pale scenes: fog, snow, concrete.
[[nodiscard]] bool isToned(const Views& shown);

/// Whether it does so wholly: a picture in black and white was made of one channel, and any colour
/// of the scene may be lighter or darker in it. A light tint is none, a deep one may be.
[[nodiscard]] bool isMonochrome(const Views& shown);

/// Whether a picture that shows the same scene as `shown`, laid over it so, has its colours wrong:
/// far off on the whole, or exchanged. False where `shown` is in black and white, or toned in one
/// colour.
[[nodiscard]] bool hasOtherColors(const Views& picture, const Views& shown, const Overlay& overlay);

} // namespace SceneComparison
