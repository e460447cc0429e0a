#pragma once

#include "Bitmap.h"
#include "CieLab.h"
#include "SceneComparison.h"

#include <array>
#include <vector>

/// The same place in a photo and in a picture of it.
struct ColorSample {
    std::array<float, 3> light{}; ///< the photo's, linear R, G, B, 0..1
    CieLab shown;                 ///< the picture's colour
    float weight{1.0F};           ///< how much it can be trusted, 0..1
    bool isFull{false};           ///< all of the photo's channels are clipped
};

namespace ColorSamples
{

/// A grid of places all over the part that both show; both are Transfer::Linear and `shown` lies
/// over `photo` as `overlay` says. Without places where the sensor's channels are clipped in part.
/// Edges, which are seldom in register, have little weight. Any thread.
/// `balance`: gains of the photo's channels before they are clipped.
[[nodiscard]] std::vector<ColorSample> of(const Bitmap& photo,
                                          const Bitmap& shown,
                                          const SceneComparison::Overlay& overlay,
                                          const std::array<double, 3>& balance = {1.0, 1.0, 1.0});

} // namespace ColorSamples
