#pragma once

#include "RenditionFit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <span>

/// The numbers that a fit finds, and the rendition that they stand for. Any thread.
namespace RenditionNumbers
{

// What is fitted, in this order; all are 0 where nothing is to be changed. The gains and the
// saturation are logarithms within bounds.
inline constexpr std::size_t kStops = 0;
inline constexpr std::size_t kRedGain = 1;
inline constexpr std::size_t kBlueGain = 2;
inline constexpr std::size_t kSaturation = 3;
inline constexpr std::size_t kSlopes = 4;
inline constexpr std::size_t kNumbers = kSlopes + ToneCurve::kPieces;

/// No camera renders by more stops, in either direction.
inline constexpr double kStopsBound = 5.0;

/// Luminance of linear sRGB (IEC 61966-2-1, 5.2).
inline constexpr std::array<double, 3> kLuminance{0.2126, 0.7152, 0.0722};

/// The slopes of the tone curve.
[[nodiscard]] ToneCurve::Slopes slopesOf(std::span<const double> numbers);

/// A rendition in parts.
struct Parts {
    std::array<double, 3> balance{1.0, 1.0, 1.0}; ///< of the light at hand, the least 1
    ColorMatrix matrix{};                         ///< of linear sRGB
    double stops{0.0};
};

/// The gains are those of the sensor's own colours, so that its primaries stay what they are.
[[nodiscard]] Parts partsOf(std::span<const double> numbers, const SensorColors& colors);

/// All together.
[[nodiscard]] Rendition renditionOf(std::span<const double> numbers, const SensorColors& colors);

/// The steps of light of a curve, for many places: light in, light out.
class LightTable final
{
public:
    LightTable(const std::function<double(double)>& toneOfEncoded, double gain);

    [[nodiscard]] float at(float light) const
    {
        const float place = std::sqrt(std::clamp(light, 0.0F, 1.0F)) * kSteps;
        const auto below = std::min(static_cast<std::size_t>(place), kSteps - 1);
        const float from = m_values[below];
        return from + (m_values[below + 1] - from) * (place - static_cast<float>(below));
    }

private:
    static constexpr std::size_t kSteps = 256;
    std::array<float, kSteps + 1> m_values{};
};

} // namespace RenditionNumbers
