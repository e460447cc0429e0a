#include "JpegEstimate.h"

#include "ScanSettings.h"
#include "TargetSize.h"
#include "UserDefaults.h"

#include <QSize>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

using namespace Qt::StringLiterals;

namespace
{

/// Bits a pixel takes at one quality.
struct Density {
    double quality;
    double lowest;
    double highest;
};

/// Measured: the smallest and the largest of a score of photos that this program converted (DNG,
/// CR2, CRW, RW2, NEF, JPEG and HEIC, 1 to 20 megapixels) at full size.
constexpr std::array kDensities{
    Density{0.0, 0.05, 0.13},
    Density{0.2, 0.10, 0.63},
    Density{0.4, 0.17, 0.98},
    Density{0.6, 0.25, 1.33},
    Density{0.7, 0.33, 1.55},
    Density{0.8, 0.47, 2.04},
    Density{0.9, 1.10, 3.53},
    Density{0.95, 1.78, 5.37},
    Density{1.0, 3.12, 13.22},
};
/// A scaled copy holds more detail a pixel: of the same photos, at half and at a quarter of their
/// sizes, the largest took up to 1.4 times as much.
constexpr double kScaledDensity = 1.5;
constexpr double kBitsPerByte = 8.0;

/// Between the two measured qualities around it, in proportion.
Density densityAt(double quality)
{
    const double wanted =
        std::clamp(quality, kDensities.front().quality, kDensities.back().quality);
    const auto* const above =
        std::find_if(kDensities.begin() + 1, kDensities.end(), [wanted](const Density& density) {
            return density.quality >= wanted;
        });
    const Density& upper = *above;
    const Density& lower = *(above - 1);
    const double share = (wanted - lower.quality) / (upper.quality - lower.quality);
    return {.quality = wanted,
            .lowest = std::lerp(lower.lowest, upper.lowest, share),
            .highest = std::lerp(lower.highest, upper.highest, share)};
}

} // namespace

JpegEstimate::Range JpegEstimate::bytes(const QSize& pixels, const UserDefaults& settings)
{
    const std::optional<QSize> target = targetSize(pixels, outputSize(settings));
    if (!target) {
        return {};
    }
    const Density density = densityAt(settings.doubleValue(u"JpegQuality"_s));
    const double count = static_cast<double>(target->width()) * target->height();
    const double highest = density.highest * (*target == pixels ? 1.0 : kScaledDensity);
    return {.lowest = std::llround(count * density.lowest / kBitsPerByte),
            .highest = std::llround(count * highest / kBitsPerByte)};
}
