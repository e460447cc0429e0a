#include "LeastSquares.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace
{

/// Of a * exp(b * x) from 3 * exp(-0.5 * x), at ten places.
void decay(std::span<const double> numbers, std::span<double> residuals)
{
    for (std::size_t i = 0; i < residuals.size(); ++i) {
        const auto x = static_cast<double>(i);
        residuals[i] = numbers[0] * std::exp(numbers[1] * x) - 3.0 * std::exp(-0.5 * x);
    }
}

double squares(const LeastSquares::Residuals& residuals, std::span<const double> numbers)
{
    std::array<double, 10> left{};
    residuals(numbers, left);
    double sum = 0.0;
    for (const double value : left) {
        sum += value * value;
    }
    return sum;
}

} // namespace

TEST(LeastSquaresTest, findsTheNumbersThatLeaveNothing)
{
    const auto found = LeastSquares::minimised({1.0, 0.0}, 10, decay, 50);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_NEAR(found[0], 3.0, 1e-3);
    EXPECT_NEAR(found[1], -0.5, 1e-3);
}

TEST(LeastSquaresTest, numbersWithoutAnyEffectAreLeftAlone)
{
    const auto straight = [](std::span<const double> numbers, std::span<double> residuals) {
        for (double& residual : residuals) {
            residual = numbers[0] - 2.0;
        }
    };
    const auto found = LeastSquares::minimised({0.0, 7.0}, 10, straight, 20);
    EXPECT_EQ(found[1], 7.0);
}

TEST(LeastSquaresTest, theResultIsNeverWorseThanTheStart)
{
    const auto wild = [](std::span<const double> numbers, std::span<double> residuals) {
        for (std::size_t i = 0; i < residuals.size(); ++i) {
            residuals[i] = std::sin(20.0 * numbers[0] + static_cast<double>(i)) + 0.1 * numbers[0];
        }
    };
    for (int i = -20; i <= 20; ++i) {
        const std::vector<double> start{0.37 * i};
        EXPECT_LE(squares(wild, LeastSquares::minimised(start, 10, wild, 10)),
                  squares(wild, start));
    }
}
