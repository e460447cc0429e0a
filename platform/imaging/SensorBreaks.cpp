#include "SensorBreaks.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <vector>

namespace
{

constexpr int kParts = 64;

/// The mean steps from one row to the next of the same filters, in each part of the row.
using Steps = std::array<float, kParts>;

/// How many rows before a break tell what steps are usual.
constexpr int kRowsBefore = 6;

/// The mean difference of `count` values of two rows.
float meanStep(const quint16* row, const quint16* other, int count)
{
    quint32 sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += static_cast<quint32>(std::abs(int{row[i]} - int{other[i]}));
    }
    return static_cast<float>(sum) / static_cast<float>(count);
}

std::vector<Steps> stepsOf(const SensorValues& values)
{
    const int part = values.size.width() / kParts * values.channels;
    std::vector<Steps> all(static_cast<std::size_t>(values.size.height() - values.period));
    const quint16* row = values.first;
    for (Steps& steps : all) {
        const quint16* from = row;
        for (float& step : steps) {
            step = meanStep(from, from + values.period * values.stride, part);
            from += part;
        }
        row += values.stride;
    }
    return all;
}

/// Marks the parts in which two steps in a row are far larger than those before: one alone is a
/// line, as sensors have them that find the focus in single rows.
std::array<bool, kParts>
brokenParts(const Steps* before, const Steps& first, const Steps& second, float least)
{
    constexpr float kTimes = 4.0F;
    std::array<bool, kParts> broken{};
    for (std::size_t part = 0; part < kParts; ++part) {
        float usual = 0.0F;
        for (int row = 0; row < kRowsBefore; ++row) {
            usual = std::max(usual, before[row][part]);
        }
        const float bound = kTimes * usual + least;
        broken[part] = first[part] > bound && second[part] > bound;
    }
    return broken;
}

struct Break {
    std::ptrdiff_t row{0}; ///< the first step of it, or the first row after it
    int parts{0};
};

/// The breaks through enough parts of which the steps before are usual ones. One that begins within
/// a row lies in two.
std::vector<Break> breaksIn(const std::vector<Steps>& steps, std::ptrdiff_t margin, float least)
{
    constexpr int kEnough = kParts / 2;
    std::vector<Break> breaks;
    std::array<bool, kParts> last{};
    const auto end = std::ssize(steps) - margin - 1;
    for (std::ptrdiff_t row = std::max<std::ptrdiff_t>(margin, kRowsBefore); row < end; ++row) {
        const auto at = static_cast<std::size_t>(row);
        const auto broken = brokenParts(&steps[at - kRowsBefore], steps[at], steps[at + 1], least);
        int parts = 0;
        for (std::size_t part = 0; part < kParts; ++part) {
            parts += broken[part] || last[part] ? 1 : 0;
        }
        if (parts >= kEnough) {
            breaks.push_back({row, parts});
        }
        last = broken;
    }
    return breaks;
}

/// Of breaks that lie within a few rows the longest.
std::vector<Break> apart(std::vector<Break> breaks)
{
    constexpr std::ptrdiff_t kFewRows = 8;
    std::ranges::sort(breaks, {}, &Break::row);
    std::vector<Break> kept;
    std::ptrdiff_t first = 0;
    for (const Break& found : breaks) {
        if (kept.empty() || found.row - first > kFewRows) {
            kept.push_back(found);
            first = found.row;
        } else if (found.parts > kept.back().parts) {
            kept.back() = found;
        }
    }
    return kept;
}

} // namespace

std::vector<double> SensorBreaks::places(const SensorValues& values)
{
    constexpr int kFewestRows = 64;
    constexpr float kLeastOfWhite = 1.0F / 500.0F;
    constexpr int kMargin = 32; // the outermost rows, as part of all
    const int height = values.size.height();
    if (values.size.width() < 4 * kParts || height < kFewestRows) {
        return {};
    }
    const float least =
        std::max(2.0F, static_cast<float>(values.white - values.black) * kLeastOfWhite);
    std::vector<Steps> steps = stepsOf(values);
    const auto count = std::ssize(steps);
    const auto margin = values.mayHaveRim ? count / kMargin : 0;
    std::vector<Break> breaks = breaksIn(steps, margin, least);
    for (Break& begin : breaks) {
        begin.row += values.period;
    }
    std::ranges::reverse(steps);
    for (const Break& end : breaksIn(steps, margin, least)) {
        breaks.push_back({count - end.row, end.parts});
    }
    std::vector<double> places;
    std::ranges::transform(
        apart(std::move(breaks)), std::back_inserter(places), [&](const Break& found) {
            return static_cast<double>(found.row) / height;
        });
    return places;
}
