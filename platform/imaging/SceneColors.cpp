#include "Correlation.h"
#include "SceneComparison.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

// What pictures of a scene say of each other's colours.

using SceneComparison::Overlay;

namespace
{

constexpr QSize kColorGrid(64, 64);

/// How much a colour may deviate among places of one lightness, and in how many steps these are
/// told apart: with more of them less is left of any colour.
struct Toning {
    double deviation;
    std::size_t steps;
};

/// Below that a picture hardly has colours that a rendering could be judged or guided by.
constexpr Toning kHardlyColored{.deviation = 0.015, .steps = 16};

/// There is none but what the rounding of JPEG leaves; a light tint hardly changes within a step.
constexpr Toning kUncolored{.deviation = 0.003, .steps = 64};

/// Whether one view of the colour depends on lightness alone, but for such a deviation.
bool isTonedIn(const SmallPicture& lightness, const SmallPicture& color, const Toning& toning)
{
    std::vector<double> sums(toning.steps);
    std::vector<double> squares(toning.steps);
    std::vector<double> counts(toning.steps);
    const auto steps = static_cast<double>(toning.steps);
    for (std::size_t i = 0; i < color.values().size(); ++i) {
        const auto part = static_cast<double>(lightness.values()[i]) * steps;
        const auto step = static_cast<std::size_t>(std::clamp(part, 0.0, steps - 1.0));
        const auto value = static_cast<double>(color.values()[i]);
        sums.at(step) += value;
        squares.at(step) += value * value;
        counts.at(step) += 1.0;
    }
    double rest = 0.0;
    for (std::size_t step = 0; step < toning.steps; ++step) {
        rest += squares.at(step) - sums.at(step) * sums.at(step) / std::max(counts.at(step), 1.0);
    }
    return rest <= toning.deviation * toning.deviation * static_cast<double>(color.values().size());
}

bool isTonedBut(const Toning& toning, const SceneComparison::Views& shown)
{
    return isTonedIn(shown.lightness, shown.redBlue, toning) &&
           isTonedIn(shown.lightness, shown.greenMagenta, toning);
}

/// Whether the colours are far apart on the whole, or one picture's are where the other's are not,
/// as after an exchange of channels.
bool isContrary(const std::pair<SmallPicture, SmallPicture>& colors)
{
    constexpr double kBound = 0.4;
    constexpr double kColored = 0.03;
    constexpr double kContrary = -0.5;
    if (std::abs(colors.first.mean() - colors.second.mean()) > kBound) {
        return true;
    }
    return colors.first.deviation() >= kColored && colors.second.deviation() >= kColored &&
           Correlation::ofRanks(colors.first.values(), colors.second.values()) <= kContrary;
}

} // namespace

bool SceneComparison::isToned(const Views& shown)
{
    return isTonedBut(kHardlyColored, shown);
}

bool SceneComparison::isMonochrome(const Views& shown)
{
    return isTonedBut(kUncolored, shown);
}

SceneComparison::Views SceneComparison::Views::of(const Bitmap& bitmap)
{
    return {.lightness = SmallPicture::of(bitmap),
            .redBlue = SmallPicture::of(bitmap, SmallPicture::View::RedBlue),
            .greenMagenta = SmallPicture::of(bitmap, SmallPicture::View::GreenMagenta)};
}

SceneComparison::Views SceneComparison::Views::of(const QImage& image)
{
    return {.lightness = SmallPicture::of(image),
            .redBlue = SmallPicture::of(image, SmallPicture::View::RedBlue),
            .greenMagenta = SmallPicture::of(image, SmallPicture::View::GreenMagenta)};
}

bool SceneComparison::hasOtherColors(const Views& picture,
                                     const Views& shown,
                                     const Overlay& overlay)
{
    const SmallPicture lightness =
        laidOver(picture.lightness, shown.lightness, overlay, kColorGrid).second;
    const auto redBlue = laidOver(picture.redBlue, shown.redBlue, overlay, kColorGrid);
    const auto greenMagenta =
        laidOver(picture.greenMagenta, shown.greenMagenta, overlay, kColorGrid);
    if (isTonedIn(lightness, redBlue.second, kHardlyColored) &&
        isTonedIn(lightness, greenMagenta.second, kHardlyColored)) {
        return false;
    }
    return isContrary(redBlue) || isContrary(greenMagenta);
}
