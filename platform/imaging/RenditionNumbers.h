#pragma once

#include "RenditionFit.h"
#include "SampledFunction.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
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

/// The light of a curve's tones, for many places: light in, light out.
class LightTable final
{
public:
    /// Light is multiplied by `gain`, clipped, and encoded on its way into the curve.
    LightTable(const ToneCurve& curve, double gain);

    [[nodiscard]] float at(float light) const
    {
        return m_ofRoots.at(std::sqrt(std::max(light, 0.0F)));
    }

private:
    SampledFunction<256> m_ofRoots; ///< closer in the shadows
};

} // namespace RenditionNumbers
