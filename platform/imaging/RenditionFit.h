#pragma once

#include "Bitmap.h"
#include "Rendition.h"

#include <QImage>
#include <QList>

#include <array>
#include <optional>

/// What is known of a sensor's colours.
struct SensorColors {
    /// What still has to be done to its light.
    struct Sensor {
        std::array<double, 3> balance{1.0, 1.0, 1.0}; ///< gains that make grey grey, the least 1
        double white{1.0}; ///< from here on light is clipped in all channels, 0..1
    };

    /// From the sensor's colours, white balanced, to linear sRGB.
    ColorMatrix toSrgb{kIdentityMatrix};
    /// By how much the maker's own software lightens its pictures (DNG's BaselineExposure).
    double stops{0.0};
    /// Where the light at hand is still the sensor's, unbalanced, and not linear sRGB.
    std::optional<Sensor> sensor{std::nullopt};

    /// Of light at hand: linear sRGB, as it is without any fit.
    [[nodiscard]] ColorMatrix lightToSrgb() const
    {
        if (!sensor) {
            return kIdentityMatrix;
        }
        const auto& [red, green, blue] = sensor->balance;
        return multiplied(toSrgb, {red, 0.0, 0.0, 0.0, green, 0.0, 0.0, 0.0, blue});
    }
};

/// Finds how a photo has to be rendered to look like a picture that was made of it. Any thread;
/// deterministic.
namespace RenditionFit
{

/// `light`: the photo as it was decoded, Transfer::Linear, averaged down (ReducedPicture), in the
/// colours that `colors` tells.
/// `references`: pictures that may show it, turned in any way, those that tell most first.
///
/// The first reference that shows the scene in colour is followed, in exposure, a tone curve, two
/// gains of the sensor's colours and a saturation, in this order of trust. Places that differ from
/// it otherwise, by the reference's sharpening, retouching or cropping, have little weight. Where
/// no reference shows the scene in colour it is the neutral rendition, whatever the photo shows.
[[nodiscard]] Rendition
of(const Bitmap& light, const SensorColors& colors, const QList<QImage>& references);

} // namespace RenditionFit
