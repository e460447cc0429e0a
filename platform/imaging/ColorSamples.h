#pragma once

#include "Bitmap.h"
#include "CieLab.h"
#include "SceneComparison.h"

#include <array>
#include <optional>
#include <vector>

/// The same place in a photo and in a picture of it.
struct ColorSample {
    std::array<float, 3> light{}; ///< the photo's, linear R, G, B, 0..1
    CieLab shown;                 ///< the picture's colour
    float weight{1.0F};           ///< how much it can be trusted, 0..1
};

/// How the photo's light clips.
struct ColorClipping {
    std::array<double, 3> balance{1.0, 1.0, 1.0}; ///< gains of its channels before they are clipped
    double white{1.0};                            ///< at this, in all channels
};

/// What a picture shows of a photo. A value type.
struct ColorSamples {
    std::vector<ColorSample> samples;
    /// How light (L*) the picture shows places where all channels of the photo are clipped; nothing
    /// where there is none.
    std::optional<float> fullLight;

    /// A grid of places all over the part that both show; both are Transfer::Linear and `shown`
    /// lies over `photo` as `overlay` says. Without places where the sensor's channels are clipped
    /// in part. Edges, which are seldom in register, have little weight. Any thread.
    [[nodiscard]] static ColorSamples of(const Bitmap& photo,
                                         const Bitmap& shown,
                                         const SceneComparison::Overlay& overlay,
                                         const ColorClipping& clipping = {});
};
