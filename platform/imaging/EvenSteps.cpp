#include "EvenSteps.h"

#include "LeastSquares.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <span>

namespace
{

double stepAt(std::span<const double> numbers, QPoint place)
{
    return numbers[0] + numbers[1] * place.x() + numbers[2] * place.y();
}

std::vector<double> fittedTo(const std::vector<EvenSteps::Sample>& samples,
                             int (QPoint::*part)() const)
{
    constexpr int kMostSteps = 20;
    const auto residuals = [&](std::span<const double> numbers, std::span<double> rests) {
        for (std::size_t i = 0; i < samples.size(); ++i) {
            rests[i] = stepAt(numbers, samples[i].place) - (samples[i].step.*part)();
        }
    };
    return LeastSquares::minimised({0.0, 0.0, 0.0}, samples.size(), residuals, kMostSteps);
}

/// Whether the samples are spread over several lines, columns or rows: over two the rounding of
/// their steps makes a slope, and a single one in a line may be alike by chance.
bool areSpread(const std::vector<EvenSteps::Sample>& samples, int (QPoint::*line)() const)
{
    constexpr int kFewestInLine = 2;
    constexpr int kFewestLines = 3;
    std::map<int, int> counts;
    for (const EvenSteps::Sample& sample : samples) {
        ++counts[(sample.place.*line)()];
    }
    return std::ranges::count_if(counts, [](const auto& count) {
               return count.second >= kFewestInLine;
           }) >= kFewestLines;
}

} // namespace

std::optional<EvenSteps> EvenSteps::of(const std::vector<Sample>& samples)
{
    constexpr double kMostOff = 1.0;
    if (!areSpread(samples, &QPoint::x) || !areSpread(samples, &QPoint::y)) {
        return std::nullopt;
    }
    const EvenSteps steps(samples);
    return steps.deviationOf(samples) <= kMostOff ? std::optional(steps) : std::nullopt;
}

EvenSteps::EvenSteps(const std::vector<Sample>& samples)
    : m_right(fittedTo(samples, &QPoint::x))
    , m_down(fittedTo(samples, &QPoint::y))
{
}

double EvenSteps::deviationOf(const std::vector<Sample>& samples) const
{
    double squares = 0.0;
    for (const Sample& sample : samples) {
        const double right = stepAt(m_right, sample.place) - sample.step.x();
        const double down = stepAt(m_down, sample.place) - sample.step.y();
        squares += right * right + down * down;
    }
    return std::sqrt(squares / static_cast<double>(samples.size()));
}

double EvenSteps::lengthAt(QPoint place) const
{
    return std::hypot(stepAt(m_right, place), stepAt(m_down, place));
}
