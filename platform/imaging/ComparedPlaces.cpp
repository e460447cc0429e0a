#include "ComparedPlaces.h"

#include "Correlation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numeric>
#include <span>

namespace
{

constexpr int kValuesASide = ComparedPlaces::kSide;

/// Means of seven values each along lines, whose values are `step` apart and which are `line`
/// apart.
std::vector<float>
meansAlong(const std::vector<float>& values, std::ptrdiff_t step, std::ptrdiff_t line)
{
    constexpr int kAround = 3;
    std::vector<float> result(values.size());
    std::array<double, kValuesASide + 1> sums{}; // of all values before each
    for (std::ptrdiff_t start = 0; start < kValuesASide; ++start) {
        const auto index = [&](int place) {
            return static_cast<std::size_t>(start * line + place * step);
        };
        for (std::size_t place = 0; place < kValuesASide; ++place) {
            sums[place + 1] =
                sums[place] + static_cast<double>(values[index(static_cast<int>(place))]);
        }
        for (int place = 0; place < kValuesASide; ++place) {
            const int from = std::max(0, place - kAround);
            const int end = std::min(kValuesASide, place + kAround + 1);
            const double sum =
                sums.at(static_cast<std::size_t>(end)) - sums.at(static_cast<std::size_t>(from));
            result[index(place)] = static_cast<float>(sum / (end - from));
        }
    }
    return result;
}

std::vector<float> less(std::vector<float> values, const std::vector<float>& others)
{
    std::ranges::transform(values, others, values.begin(), std::minus<float>());
    return values;
}

/// How far a place is looked for, in values. Lenses bend pictures, and cameras bend their previews
/// back.
constexpr int kSearched = 4;

/// The ways to go there, the shortest first.
const std::vector<QPoint>& stepsAround()
{
    static const std::vector<QPoint> kSteps = [] {
        std::vector<QPoint> steps;
        for (int down = -kSearched; down <= kSearched; ++down) {
            for (int right = -kSearched; right <= kSearched; ++right) {
                steps.emplace_back(right, down);
            }
        }
        std::ranges::stable_sort(steps, std::less(), &QPoint::manhattanLength);
        return steps;
    }();
    return kSteps;
}

std::size_t valueAt(int x, int y)
{
    return static_cast<std::size_t>(y) * kValuesASide + static_cast<std::size_t>(x);
}

/// The root of the mean square of a part of the detail.
float strengthOf(const std::vector<float>& detail, const QRect& area)
{
    float squares = 0.0F;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const float value = detail[valueAt(x, y)];
            squares += value * value;
        }
    }
    return std::sqrt(squares / static_cast<float>(area.width() * area.height()));
}

QRect areaOf(QPoint place)
{
    constexpr int kSide = ComparedPlaces::kPlaceSide;
    return {place * kSide, QSize(kSide, kSide)};
}

constexpr QRect kAllValues(0, 0, kValuesASide, kValuesASide);

} // namespace

ComparedPlaces::ComparedPlaces(const SmallPicture& picture, const SmallPicture& shown)
    : m_picture(picture)
    , m_shown(shown)
    , m_pictureDetail(detailOf(picture))
    , m_shownDetail(detailOf(shown))
{
}

ComparedPlaces::Detail ComparedPlaces::detailOf(const SmallPicture& lightness)
{
    const std::vector<float> means = meansAlong(lightness.values(), 1, kValuesASide);
    return {.around = less(lightness.values(), meansAlong(means, kValuesASide, 1)),
            .along = less(lightness.values(), means)};
}

std::vector<ComparedPlace> ComparedPlaces::places() const
{
    std::vector<ComparedPlace> all;
    all.reserve(std::size_t{kPlaces} * kPlaces);
    for (int index = 0; index < kPlaces * kPlaces; ++index) {
        all.push_back(at(index % kPlaces, index / kPlaces));
    }
    return all;
}

QPoint ComparedPlaces::bestStep(QPoint place) const
{
    const QRect area = areaOf(place);
    return *std::ranges::max_element(stepsAround(), std::less(), [&](QPoint step) {
        return likeness(area & kAllValues.translated(-step), step);
    });
}

int ComparedPlaces::alikeRows() const
{
    int longest = 0;
    int run = 0;
    for (int row = 0; row < kValuesASide; ++row) {
        const bool isAtEdge = row < kPlaceSide || row >= kValuesASide - kPlaceSide;
        run = isAtEdge && isAlikeRow(row) ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

bool ComparedPlaces::isAlikeRow(int row) const
{
    constexpr double kAlikeRow = 0.8;
    const auto rowOf = [row](const std::vector<float>& values) {
        return std::span(values).subspan(valueAt(0, row), kValuesASide);
    };
    const auto shown = rowOf(m_shownDetail.along);
    const float squares = std::inner_product(shown.begin(), shown.end(), shown.begin(), 0.0F);
    return squares >= kDetail * kDetail * kValuesASide &&
           Correlation::ofValues(rowOf(m_pictureDetail.along), shown) >= kAlikeRow;
}

ComparedPlace ComparedPlaces::at(int column, int row) const
{
    const QRect area = areaOf({column, row});
    ComparedPlace place;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            place.shownMean += m_shown.at(x, y);
            place.darkest = std::min(place.darkest, m_picture.at(x, y));
            place.lightest = std::max(place.lightest, m_picture.at(x, y));
        }
    }
    place.shownMean /= kPlaceSide * kPlaceSide;
    place.pictureDetail = strengthOf(m_pictureDetail.around, area);
    place.shownDetail = strengthOf(m_shownDetail.around, area);
    if (place.shownDetail >= kDetail) {
        place.sureDetail = sureDetail(area);
        place.likeness = likeness(area);
    }
    return place;
}

/// At the edge of a smooth part the shape beyond it may be taken for the place's own.
float ComparedPlaces::sureDetail(const QRect& area) const
{
    float least = strengthOf(m_shownDetail.around, area);
    for (const int down : {-kSearched, 0, kSearched}) {
        for (const int right : {-kSearched, 0, kSearched}) {
            const QRect moved = area.translated(right, down) & kAllValues;
            least = std::min(least, strengthOf(m_shownDetail.around, moved));
        }
    }
    return least;
}

/// The best, or one that is enough.
float ComparedPlaces::likeness(const QRect& area) const
{
    float best = -1.0F;
    for (const QPoint& step : stepsAround()) {
        best = std::max(best, likeness(area & kAllValues.translated(-step), step));
        if (best >= kAlike) {
            break;
        }
    }
    return best;
}

float ComparedPlaces::likeness(const QRect& area, const QPoint& step) const
{
    float pictures = 0.0F;
    float shown = 0.0F;
    float pictureSquares = 0.0F;
    float shownSquares = 0.0F;
    float products = 0.0F;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const float* const picture =
            &m_pictureDetail.around[valueAt(area.left() + step.x(), y + step.y())];
        const float* const other = &m_shownDetail.around[valueAt(area.left(), y)];
        for (int x = 0; x < area.width(); ++x) {
            pictures += picture[x];
            shown += other[x];
            pictureSquares += picture[x] * picture[x];
            shownSquares += other[x] * other[x];
            products += picture[x] * other[x];
        }
    }
    const auto count = static_cast<float>(area.width() * area.height());
    const float spread =
        (pictureSquares - pictures * pictures / count) * (shownSquares - shown * shown / count);
    return spread > 0.0F ? (products - pictures * shown / count) / std::sqrt(spread) : 0.0F;
}
