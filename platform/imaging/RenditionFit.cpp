#include "RenditionFit.h"

#include "ColorSamples.h"
#include "LeastSquares.h"
#include "ReducedPicture.h"
#include "RenditionNumbers.h"
#include "SceneComparison.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <span>
#include <utility>

using namespace RenditionNumbers;

namespace
{

// How firmly the numbers are held where the picture says little, in L* of the whole picture for one
// unit: the curve's slopes to their neighbours, the gains and the saturation to what they are.
constexpr double kSlopeHold = 0.27;
constexpr double kGainHold = 0.1;
constexpr double kSaturationHold = 0.33;
constexpr double kStopsHold = 0.02;
/// How blown places are shown counts as much as this, however few they are: nothing else tells how
/// white full light is.
constexpr double kFullLightHold = 0.5;

/// The distance of colours (that of CIE94) at which most places show that no rendition of the photo
/// is what the picture shows. Measured: true previews 1 to 4.
constexpr double kFarOff = 12.0;

/// Fewer places prove nothing.
constexpr std::size_t kFewestSamples = 200;

/// The share of chroma by which differences of colour count less
/// (CIE94, CIE 116:1995, which leaves hue apart).
constexpr double kChromaShare = 0.045;

/// The fit to one set of samples.
class Fit final
{
public:
    Fit(ColorSamples found, const SensorColors& colors)
        : m_samples(std::move(found.samples))
        , m_colors(colors)
    {
        if (found.fullLight) {
            addFullLight(*found.fullLight);
        }
    }

    /// Nothing where most places stay far off.
    [[nodiscard]] std::optional<Rendition> result()
    {
        constexpr int kSteps = 8;
        constexpr int kMoreSteps = 4;
        std::vector<double> numbers(kNumbers, 0.0);
        numbers[kStops] = startingStops();
        const auto residuals = [this](std::span<const double> at, std::span<double> into) {
            write(at, into);
        };
        numbers = LeastSquares::minimised(std::move(numbers), rows(), residuals, kSteps);
        if (weighAnew(numbers) > kFarOff) {
            return std::nullopt;
        }
        return renditionOf(
            LeastSquares::minimised(std::move(numbers), rows(), residuals, kMoreSteps), m_colors);
    }

private:
    [[nodiscard]] std::size_t rows() const { return 3 * m_samples.size() + kHolds; }

    /// One more sample: light that is clipped in all channels.
    void addFullLight(float lightness)
    {
        constexpr float kMuch = 1e3F; // clipped to what the sensor holds
        const double weight = kFullLightHold * std::sqrt(static_cast<double>(m_samples.size()));
        m_samples.push_back({.light = {kMuch, kMuch, kMuch},
                             .shown = {lightness, 0.0F, 0.0F},
                             .weight = static_cast<float>(weight)});
    }

    /// What brings the middle of the photo's light to the middle of what is shown.
    [[nodiscard]] double startingStops() const
    {
        std::vector<double> stops;
        for (const ColorSample& sample : m_samples) {
            const double luminance =
                std::inner_product(kLuminance.begin(), kLuminance.end(), sample.light.begin(), 0.0);
            const double lightness = (static_cast<double>(sample.shown.lightness) + 16.0) / 116.0;
            stops.push_back(
                std::log2((lightness * lightness * lightness + 1e-4) / (luminance + 1e-4)));
        }
        std::ranges::nth_element(stops, stops.begin() + std::ssize(stops) / 2);
        // The common curve lightens the middle by about a stop itself.
        return std::clamp(stops[stops.size() / 2] - 1.0, -kStopsBound, kStopsBound);
    }

    /// Differences of L*, a* and b* from what is shown, and what holds the numbers.
    void write(std::span<const double> numbers, std::span<double> into) const
    {
        const Parts parts = partsOf(numbers, m_colors);
        // Clipped light stays white, as in the rendition.
        const Rendition::Parts scaled = Rendition::scaled(parts.matrix, parts.stops);
        const ToneCurve curve(slopesOf(numbers));
        const LightTable table(curve, scaled.gain);
        const auto toFloats = [](const auto& from, auto& to) {
            std::ranges::transform(
                from, to.begin(), [](double value) { return static_cast<float>(value); });
        };
        std::array<float, 9> m{};
        toFloats(m_colors.sensor ? multiplied(scaled.matrix, m_colors.toSrgb) : scaled.matrix, m);
        std::array<float, 3> balance{};
        toFloats(parts.balance, balance);
        const auto white = static_cast<float>(m_colors.sensor ? m_colors.sensor->white : 1.0);
        const double share = 1.0 / std::sqrt(static_cast<double>(m_samples.size()));
        double* next = into.data();
        for (const ColorSample& sample : m_samples) {
            const std::array<float, 3> in{std::min(sample.light[0] * balance[0], white),
                                          std::min(sample.light[1] * balance[1], white),
                                          std::min(sample.light[2] * balance[2], white)};
            const std::array<float, 3> out{table.at(m[0] * in[0] + m[1] * in[1] + m[2] * in[2]),
                                           table.at(m[3] * in[0] + m[4] * in[1] + m[5] * in[2]),
                                           table.at(m[6] * in[0] + m[7] * in[1] + m[8] * in[2])};
            const CieLab lab = CieLab::of(out);
            const double weight = static_cast<double>(sample.weight) * share;
            const double colorWeight = weight * colorShare(sample.shown);
            *next++ = weight * static_cast<double>(lab.lightness - sample.shown.lightness);
            *next++ = colorWeight * static_cast<double>(lab.redGreen - sample.shown.redGreen);
            *next++ = colorWeight * static_cast<double>(lab.yellowBlue - sample.shown.yellowBlue);
        }
        writeHolds(numbers, next);
    }

    static void writeHolds(std::span<const double> numbers, double* next)
    {
        *next++ = kStopsHold * numbers[kStops];
        *next++ = kGainHold * numbers[kRedGain];
        *next++ = kGainHold * numbers[kBlueGain];
        *next++ = kSaturationHold * numbers[kSaturation];
        *next++ = kStopsHold * numbers[kSlopes];
        for (std::size_t piece = kSlopes + 1; piece < kNumbers; ++piece) {
            *next++ = kSlopeHold * (numbers[piece] - numbers[piece - 1]);
        }
    }

    static double colorShare(const CieLab& shown)
    {
        return 1.0 / (1.0 + kChromaShare *
                                static_cast<double>(std::hypot(shown.redGreen, shown.yellowBlue)));
    }

    /// Places that are far off after the first fit show something else: their weights shrink
    /// (Cauchy's, P. J. Huber, "Robust Statistics", 1981). Gives how far off most are.
    double weighAnew(std::span<const double> numbers)
    {
        constexpr double kUsualFactor = 3.0;
        std::vector<double> left(rows());
        write(numbers, left);
        const double scale = std::sqrt(static_cast<double>(m_samples.size()));
        std::vector<double> distances;
        for (std::size_t i = 0; i < m_samples.size(); ++i) {
            const double weight = static_cast<double>(m_samples[i].weight);
            distances.push_back(std::hypot(left[3 * i], left[3 * i + 1], left[3 * i + 2]) * scale /
                                weight);
        }
        std::vector<double> sorted = distances;
        std::ranges::nth_element(sorted, sorted.begin() + std::ssize(sorted) / 2);
        const double median = sorted[sorted.size() / 2];
        const double usual = std::max(1.0, median) * kUsualFactor;
        for (std::size_t i = 0; i < m_samples.size(); ++i) {
            const double part = distances[i] / usual;
            // The residuals are squared, the weights with them.
            m_samples[i].weight *= static_cast<float>(1.0 / std::sqrt(1.0 + part * part));
        }
        return median;
    }

    static constexpr std::size_t kHolds = kNumbers;

    std::vector<ColorSample> m_samples;
    const SensorColors& m_colors;
};

/// The fit to a reference; nothing where that shows no scene in colour, or another.
std::optional<Rendition>
fitted(const Bitmap& light, const SensorColors& colors, const QImage& reference)
{
    const Bitmap shown = ReducedPicture::of(reference);
    if (shown.isNull()) {
        return std::nullopt;
    }
    const auto views = SceneComparison::Views::of(shown);
    if (!SceneComparison::isStructured(views.lightness) || SceneComparison::isToned(views)) {
        return std::nullopt;
    }
    const auto own = SceneComparison::Views::of(transformed(light, colors.lightToSrgb()));
    const auto match = SceneComparison::bestMatch(own.lightness, views.lightness);
    if (match.likeness < SceneComparison::kSameScene ||
        SceneComparison::hasOtherColors(own, views, match.overlay)) {
        return std::nullopt;
    }
    // A small preview has averaged what the photo still has apart.
    const Bitmap alike =
        ReducedPicture::of(light, std::max(shown.pixelsWide(), shown.pixelsHigh()));
    ColorSamples found =
        ColorSamples::of(alike,
                         shown,
                         match.overlay,
                         colors.sensor ? ColorClipping{colors.sensor->balance, colors.sensor->white}
                                       : ColorClipping());
    return found.samples.size() < kFewestSamples ? std::nullopt
                                                 : Fit(std::move(found), colors).result();
}

} // namespace

Rendition
RenditionFit::of(const Bitmap& light, const SensorColors& colors, const QList<QImage>& references)
{
    for (const QImage& reference : references) {
        if (auto rendition = fitted(light, colors, reference)) {
            return std::move(*rendition);
        }
    }
    return Rendition::neutral(colors.stops);
}
