#include "SceneComparison.h"

#include "Correlation.h"

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
        all.push_back({.turns = turns, .first = fitted(firstShape, shape)});
        all.push_back({.turns = turns, .second = fitted(shape, firstShape)});
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
    for (const Overlay& overlay : overlays(first, second)) {
        const auto [one, other] = laidOver(first, second, overlay, kMatchGrid);
        const double likeness = Correlation::ofRanks(one.values(), other.values());
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
