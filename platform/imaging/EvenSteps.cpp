#include "EvenSteps.h"

#include "LeastSquares.h"

#include <cmath>
#include <cstddef>
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

} // namespace

EvenSteps::EvenSteps(const std::vector<Sample>& samples)
    : m_right(fittedTo(samples, &QPoint::x))
    , m_down(fittedTo(samples, &QPoint::y))
{
}

double EvenSteps::lengthAt(QPoint place) const
{
    return std::hypot(stepAt(m_right, place), stepAt(m_down, place));
}
