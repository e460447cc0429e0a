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

std::vector<float> ranksOf(std::span<const float> values)
{
    std::vector<std::size_t> order(values.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, [&](std::size_t a, std::size_t b) { return values[a] < values[b]; });
    std::vector<float> ranks(values.size());
    for (std::size_t start = 0; start < order.size();) {
        std::size_t end = start;
        while (end < order.size() && values[order[end]] == values[order[start]]) {
            ++end;
        }
        const float shared = static_cast<float>(start + end - 1) / 2.0F;
        for (std::size_t i = start; i < end; ++i) {
            ranks[order[i]] = shared;
        }
        start = end;
    }
    return ranks;
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
