#include "Correlation.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace
{

double meanOf(std::span<const float> values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) /
           static_cast<double>(std::max<std::size_t>(values.size(), 1));
}

} // namespace

double Correlation::ofValues(std::span<const float> first, std::span<const float> second)
{
    const double firstMean = meanOf(first);
    const double secondMean = meanOf(second);
    double firstSquares = 0.0;
    double secondSquares = 0.0;
    double products = 0.0;
    for (std::size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
        const double a = first[i] - firstMean;
        const double b = second[i] - secondMean;
        firstSquares += a * a;
        secondSquares += b * b;
        products += a * b;
    }
    const double scale = std::sqrt(firstSquares * secondSquares);
    return scale > 0.0 ? products / scale : 0.0;
}

double Correlation::ofRanks(std::span<const float> first, std::span<const float> second)
{
    return ofValues(ranksOf(first), ranksOf(second));
}

std::vector<float> Correlation::ranksOf(std::span<const float> values)
{
    constexpr std::size_t kSteps = 4096;
    if (values.empty()) {
        return {};
    }
    const auto [least, most] = std::ranges::minmax(values);
    const float scale = most > least ? static_cast<float>(kSteps - 1) / (most - least) : 0.0F;
    std::vector<std::size_t> steps(values.size());
    std::vector<int> counts(kSteps, 0);
    for (std::size_t i = 0; i < values.size(); ++i) {
        steps[i] = std::min(static_cast<std::size_t>((values[i] - least) * scale), kSteps - 1);
        ++counts[steps[i]];
    }
    std::vector<float> shared(kSteps);
    int below = 0;
    for (std::size_t step = 0; step < kSteps; ++step) {
        shared[step] = static_cast<float>(2 * below + counts[step] - 1) / 2.0F;
        below += counts[step];
    }
    std::vector<float> ranks(values.size());
    std::ranges::transform(steps, ranks.begin(), [&](std::size_t step) { return shared[step]; });
    return ranks;
}
