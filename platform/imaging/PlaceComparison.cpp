#include "PlaceComparison.h"

#include "ComparedPlaces.h"
#include "EvenSteps.h"
#include "MarkedCells.h"
#include "SceneComparison.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace
{

using Place = ComparedPlace;

constexpr int kPlaces = ComparedPlaces::kPlaces;
constexpr float kDetail = ComparedPlaces::kDetail;

/// Detail of what has no shape at all.
constexpr float kNothing = 0.001F;

/// Likeness of places that show something else. Measured: of the same 0.66 and more, by chance 0.5.
constexpr float kUnlike = 0.55F;

/// Where so many places that touch are alike and none is unlike, no other overlay is looked at.
constexpr int kSettled = kPlaces * kPlaces / 4;

bool isAlike(const Place& place)
{
    return place.shownDetail >= kDetail && place.pictureDetail >= kDetail / 2.0F &&
           place.likeness >= ComparedPlaces::kAlike;
}

/// Whether the picture has nothing there where the other has a shape, or light.
bool isLost(const Place& place)
{
    constexpr float kBlack = 0.01F;
    constexpr float kLight = 0.2F;
    const bool isBlack = place.lightest < kBlack && place.shownMean > kLight;
    return isBlack || (place.sureDetail >= kDetail && place.pictureDetail < kNothing);
}

bool isUnlike(const Place& place)
{
    constexpr float kBusy = 0.03F;
    constexpr float kTimes = 4.0F; // a rendering's contrast differs by less
    constexpr float kDarkest = 0.05F;
    constexpr float kLightest = 0.93F;
    // Where the preview is clipped the photo may have more.
    const bool isClipped = place.shownMean < kDarkest || place.shownMean > kLightest;
    const bool isBusy = place.shownDetail < kDetail &&
                        place.pictureDetail > std::max(kBusy, kTimes * place.shownDetail) &&
                        !isClipped;
    const bool isOther = place.sureDetail >= kDetail && place.likeness < kUnlike;
    return (!place.isFar && (isBusy || isOther)) || isLost(place);
}

/// Whether a row or a column of places, `step` apart, has none that is alike nearly.
bool isUnlikeLine(const std::vector<Place>& places, int first, int step)
{
    constexpr float kNearly = 0.75F;
    constexpr int kFewestShaped = 4;
    int shaped = 0;
    for (int i = 0; i < kPlaces; ++i) {
        const int number = first + i * step;
        const Place& place = places[static_cast<std::size_t>(number)];
        if (place.shownDetail >= kDetail && place.likeness >= kNearly &&
            place.pictureDetail >= kNothing) {
            return false;
        }
        shaped += place.sureDetail >= kDetail && !place.isFar ? 1 : 0;
    }
    return shaped >= kFewestShaped;
}

bool hasUnlikeLine(const std::vector<Place>& places)
{
    for (int line = 0; line < kPlaces; ++line) {
        if (isUnlikeLine(places, line * kPlaces, 1) || isUnlikeLine(places, line, kPlaces)) {
            return true;
        }
    }
    return false;
}

/// Without any variation where the other has a shape.
bool isConstant(const Place& place)
{
    constexpr float kStep = 1e-5F;
    return place.shownDetail >= kDetail && place.lightest - place.darkest < kStep;
}

bool isConstantBelowWhite(const Place& place)
{
    constexpr float kWhite = 0.98F;
    return isConstant(place) && place.lightest < kWhite;
}

/// Overlays that leave out next to nothing are as good as the one of the wholes.
bool isOfUse(const SceneComparison::Overlay& overlay)
{
    constexpr double kNearlyAll = 0.98;
    const auto isPart = [](const QRectF& area) {
        return area.width() * area.height() < kNearlyAll;
    };
    const QRectF all(0.0, 0.0, 1.0, 1.0);
    return (overlay.first == all && overlay.second == all) || isPart(overlay.first) ||
           isPart(overlay.second);
}

int largestPatch(const std::vector<Place>& places, bool (*isMarked)(const Place&))
{
    std::vector<bool> marks;
    std::ranges::transform(places, std::back_inserter(marks), isMarked);
    return MarkedCells(kPlaces, std::move(marks)).largestPatch();
}

/// Marks the places that lie too far away to be found there, by the steps of those that are alike.
void markFarPlaces(std::vector<Place>& places, const ComparedPlaces& compared)
{
    constexpr double kFar = 3.0;
    const auto placeAt = [](int index) { return QPoint(index % kPlaces, index / kPlaces); };
    std::vector<EvenSteps::Sample> samples;
    for (int index = 0; index < kPlaces * kPlaces; ++index) {
        if (isAlike(places[static_cast<std::size_t>(index)])) {
            samples.push_back({placeAt(index), compared.bestStep(placeAt(index))});
        }
    }
    const auto steps = EvenSteps::of(samples);
    if (!steps) {
        return;
    }
    for (int index = 0; index < kPlaces * kPlaces; ++index) {
        places[static_cast<std::size_t>(index)].isFar = steps->lengthAt(placeAt(index)) > kFar;
    }
}

} // namespace

PlaceComparison::PlaceComparison(const SmallPicture& picture, const SmallPicture& shown)
{
    int best = -1;
    for (const SceneComparison::Overlay& overlay : SceneComparison::overlays(picture, shown)) {
        if (!isOfUse(overlay)) {
            continue;
        }
        const auto [one, other] = SceneComparison::laidOver(
            picture, shown, overlay, {ComparedPlaces::kSide, ComparedPlaces::kSide});
        const ComparedPlaces compared(one, other);
        const std::vector<Place> places = compared.places();
        const int alike = largestPatch(places, isAlike);
        const int rows = compared.alikeRows();
        if (alike + rows > best) {
            best = alike + rows;
            m_alike = alike;
            m_alikeRows = rows;
            judge(places, compared);
            // Places that are unlike only because they lie far off are doubtful: they may be
            // damaged as well, which an overlay in which they lie nearer shows.
            if (alike >= kSettled && largestPatch(places, isUnlike) == 0) {
                return;
            }
        }
    }
}

void PlaceComparison::judge(std::vector<ComparedPlace> places, const ComparedPlaces& compared)
{
    m_lost = largestPatch(places, isLost);
    m_constant = largestPatch(places, isConstant);
    m_constantBelowWhite = largestPatch(places, isConstantBelowWhite);
    countUnlike(places);
    if (isDamaged()) {
        markFarPlaces(places, compared);
        countUnlike(places);
    }
}

void PlaceComparison::countUnlike(const std::vector<ComparedPlace>& places)
{
    m_unlike = largestPatch(places, isUnlike);
    m_hasUnlikeLine = hasUnlikeLine(places);
}

bool PlaceComparison::isSameScene() const
{
    // Measured on 780 pairs of different scenes: 3 places at most are alike; of 27 of the same
    // scene 18 and more are, and all that have a shape.
    constexpr int kFewestAlike = 4;
    constexpr int kFewestRows = 3;
    return m_alike >= kFewestAlike || m_alikeRows >= kFewestRows;
}

bool PlaceComparison::isDamaged() const
{
    // Fewer may be retouched, which takes no place away.
    constexpr int kFewestUnlike = 7;
    return hasLostPlaces() || (isSameScene() && (m_unlike >= kFewestUnlike || m_hasUnlikeLine));
}

bool PlaceComparison::hasLostPlaces() const
{
    constexpr int kFewestLost = 2;
    return isSameScene() && m_lost >= kFewestLost;
}

bool PlaceComparison::isEmptyInPlaces() const
{
    constexpr int kAll = kPlaces * kPlaces;
    return m_constantBelowWhite >= kAll / 4 || m_constant >= kAll * 3 / 4;
}
