#include "SensorBreaks.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
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
    // Mosaics repeat after two rows.
    const int period = values.channels == 1 ? 2 : 1;
    const int part = values.size.width() / kParts * values.channels;
    std::vector<Steps> all(static_cast<std::size_t>(values.size.height() - period));
    const quint16* row = values.first;
    for (Steps& steps : all) {
        const quint16* from = row;
        for (float& step : steps) {
            step = meanStep(from, from + period * values.stride, part);
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
    int parts{0};
    std::ptrdiff_t row{0}; ///< the first step of it
};

/// The longest break of which the steps before are usual ones. One that begins within a row lies
/// in two.
Break longestBreak(const std::vector<Steps>& steps, std::ptrdiff_t margin, float least)
{
    Break longest;
    std::array<bool, kParts> last{};
    const auto end = std::ssize(steps) - margin - 1;
    for (std::ptrdiff_t row = std::max<std::ptrdiff_t>(margin, kRowsBefore); row < end; ++row) {
        const auto at = static_cast<std::size_t>(row);
        const auto broken = brokenParts(&steps[at - kRowsBefore], steps[at], steps[at + 1], least);
        int parts = 0;
        for (std::size_t part = 0; part < kParts; ++part) {
            parts += broken[part] || last[part] ? 1 : 0;
        }
        if (parts > longest.parts) {
            longest = {parts, row};
        }
        last = broken;
    }
    return longest;
}

} // namespace

std::optional<double> SensorBreaks::longest(const SensorValues& values)
{
    constexpr int kFewestRows = 64;
    constexpr float kLeastOfWhite = 1.0F / 500.0F;
    constexpr int kMargin = 32; // the outermost rows, as part of all
    constexpr int kEnough = kParts / 2;
    if (values.size.width() < 4 * kParts || values.size.height() < kFewestRows) {
        return std::nullopt;
    }
    const float least =
        std::max(2.0F, static_cast<float>(values.white - values.black) * kLeastOfWhite);
    std::vector<Steps> steps = stepsOf(values);
    const auto margin = std::ssize(steps) / kMargin;
    const Break begin = longestBreak(steps, margin, least);
    std::ranges::reverse(steps);
    const Break end = longestBreak(steps, margin, least);
    if (std::max(begin.parts, end.parts) < kEnough) {
        return std::nullopt;
    }
    const auto row = begin.parts >= end.parts ? begin.row : std::ssize(steps) - 1 - end.row;
    return (static_cast<double>(row) + 1.0) / static_cast<double>(std::ssize(steps));
}
