#include "SceneComparison.h"

#include "Correlation.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

using SceneComparison::Overlay;

namespace
{

/// Smaller pictures hold too little to prove anything.
constexpr int kSmallestScene = 24;

/// Deviation of lightness (0..1) below which a picture counts as flat.
constexpr double kFlatScene = 0.02;

/// Neighbours in small pictures of scenes correlate by 0.7 and more, those of noise by about 0.
constexpr double kSceneNeighbours = 0.6;

constexpr QSize kMatchGrid(64, 64);

/// Centred part of a picture of the shape `own` (width by height) that has the shape `wanted`.
QRectF fitted(double own, double wanted)
{
    if (own > wanted) {
        const double part = wanted / own;
        return {(1.0 - part) / 2.0, 0.0, part, 1.0};
    }
    const double part = own / wanted;
    return {0.0, (1.0 - part) / 2.0, 1.0, part};
}

double shapeOf(const SmallPicture& picture)
{
    return static_cast<double>(picture.original().width()) / picture.original().height();
}

SmallPicture turnedBy(SmallPicture picture, int turns)
{
    for (int quarter = 0; quarter < turns; ++quarter) {
        picture = picture.turned();
    }
    return picture;
}

/// The ranks of the lightness of a picture's parts, each part ranked once.
class RankedParts final
{
public:
    explicit RankedParts(SmallPicture picture)
        : m_picture(std::move(picture))
    {
    }

    /// Valid until the next call.
    [[nodiscard]] const std::vector<float>& of(const QRectF& area)
    {
        const auto known = std::ranges::find(m_parts, area, &Part::area);
        if (known != m_parts.end()) {
            return known->ranks;
        }
        const SmallPicture values = m_picture.sampled(area, kMatchGrid);
        m_parts.push_back({.area = area, .ranks = Correlation::ranksOf(values.values())});
        return m_parts.back().ranks;
    }

private:
    struct Part {
        QRectF area;
        std::vector<float> ranks;
    };

    SmallPicture m_picture;
    std::vector<Part> m_parts;
};

} // namespace

bool SceneComparison::isStructured(const SmallPicture& picture)
{
    return picture.width() >= kSmallestScene && picture.height() >= kSmallestScene &&
           picture.deviation() >= kFlatScene && picture.neighbourCorrelation() >= kSceneNeighbours;
}

std::vector<Overlay> SceneComparison::overlays(const SmallPicture& first,
                                               const SmallPicture& second)
{
    // Beyond this they are no turns of each other.
    constexpr double kDifferent = 1.5;
    const double firstShape = shapeOf(first);
    std::vector<Overlay> all;
    for (int turns = 0; turns < 4; ++turns) {
        const double shape = turns % 2 == 0 ? shapeOf(second) : 1.0 / shapeOf(second);
        if (firstShape > shape * kDifferent || shape > firstShape * kDifferent) {
            continue;
        }
        all.push_back({.turns = turns});
        if (shape != firstShape) {
            all.push_back({.turns = turns, .first = fitted(firstShape, shape)});
            all.push_back({.turns = turns, .second = fitted(shape, firstShape)});
        }
    }
    return all;
}

std::pair<SmallPicture, SmallPicture> SceneComparison::laidOver(const SmallPicture& first,
                                                                const SmallPicture& second,
                                                                const Overlay& overlay,
                                                                QSize grid)
{
    return {first.sampled(overlay.first, grid),
            turnedBy(second, overlay.turns).sampled(overlay.second, grid)};
}

SceneComparison::Match SceneComparison::bestMatch(const SmallPicture& first,
                                                  const SmallPicture& second)
{
    Match best;
    RankedParts ofFirst(first);
    std::array<std::optional<RankedParts>, 4> ofSecond; // by turns
    for (const Overlay& overlay : overlays(first, second)) {
        auto& turned = ofSecond.at(static_cast<std::size_t>(overlay.turns));
        if (!turned) {
            turned.emplace(turnedBy(second, overlay.turns));
        }
        const double likeness =
            Correlation::ofValues(ofFirst.of(overlay.first), turned->of(overlay.second));
        if (likeness > best.likeness) {
            best = {.overlay = overlay, .likeness = likeness};
        }
    }
    return best;
}

double SceneComparison::likeness(const SmallPicture& first, const SmallPicture& second)
{
    return bestMatch(first, second).likeness;
}
