#include "RenditionNumbers.h"

#include "SrgbTransfer.h"

#include <algorithm>
#include <cmath>

using namespace RenditionNumbers;

namespace
{

/// Factors that no camera's rendering goes beyond.
const double kGainBound = std::log(2.5);
const double kSaturationBound = std::log(1.5);

double bounded(double number, double bound)
{
    return bound * std::tanh(number / bound);
}

double stopsOf(std::span<const double> numbers)
{
    return Rendition::kCommonStops + bounded(numbers[kStops], kStopsBound);
}

/// A saturation that keeps luminance.
ColorMatrix mixingOf(std::span<const double> numbers)
{
    const double saturation = std::exp(bounded(numbers[kSaturation], kSaturationBound));
    ColorMatrix mixing{};
    for (std::size_t i = 0; i < mixing.size(); ++i) {
        mixing.at(i) = (1.0 - saturation) * kLuminance.at(i % 3) + (i % 4 == 0 ? saturation : 0.0);
    }
    return mixing;
}

} // namespace

RenditionNumbers::LightTable::LightTable(const ToneCurve& curve, double gain)
    : m_ofRoots([&curve, rootOfGain = std::sqrt(gain)](double root) {
        static const SampledFunction<1024> kEncodedOfRoot(
            [](double of) { return SrgbTransfer::encodedFrom(of * of); });
        static const SampledFunction<1024> kLinear(SrgbTransfer::linearFrom);
        const auto encoded =
            static_cast<double>(kEncodedOfRoot.at(static_cast<float>(root * rootOfGain)));
        return static_cast<double>(kLinear.at(static_cast<float>(curve.at(encoded))));
    })
{
}

ToneCurve::Slopes RenditionNumbers::slopesOf(std::span<const double> numbers)
{
    ToneCurve::Slopes slopes = Rendition::kCommonSlopes;
    for (std::size_t piece = 0; piece < slopes.size(); ++piece) {
        slopes.at(piece) *= std::exp(std::clamp(numbers[kSlopes + piece], -4.0, 2.0));
    }
    return slopes;
}

RenditionNumbers::Parts RenditionNumbers::partsOf(std::span<const double> numbers,
                                                  const SensorColors& colors)
{
    const double red = std::exp(bounded(numbers[kRedGain], kGainBound));
    const double blue = std::exp(bounded(numbers[kBlueGain], kGainBound));
    const ColorMatrix mixing = mixingOf(numbers);
    if (!colors.sensor) {
        // Light that was clipped already.
        const ColorMatrix gains{red, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, blue};
        const ColorMatrix balanced =
            multiplied(colors.toSrgb, multiplied(gains, inverted(colors.toSrgb)));
        return {.matrix = multiplied(mixing, balanced), .stops = stopsOf(numbers)};
    }
    const auto& camera = colors.sensor->balance;
    Parts parts{.balance = {camera[0] * red, camera[1], camera[2] * blue},
                .matrix = mixing,
                .stops = stopsOf(numbers)};
    const double least = *std::ranges::min_element(parts.balance);
    for (double& gain : parts.balance) {
        gain /= least;
    }
    parts.stops += std::log2(least);
    return parts;
}

Rendition RenditionNumbers::renditionOf(std::span<const double> numbers, const SensorColors& colors)
{
    const Parts parts = partsOf(numbers, colors);
    const Rendition rendition(parts.matrix, parts.stops, ToneCurve(slopesOf(numbers)));
    return colors.sensor ? rendition.with(parts.balance) : rendition;
}
