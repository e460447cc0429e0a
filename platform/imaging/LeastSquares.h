#pragma once

#include <functional>
#include <span>
#include <vector>

/// Fitting of a few numbers to many. Any thread; deterministic.
namespace LeastSquares
{

/// Writes the residuals that the numbers leave.
using Residuals = std::function<void(std::span<const double> numbers, std::span<double> residuals)>;

/// From `start`, numbers that make the sum of the squares of `count` residuals smaller, as far as
/// `steps` steps go: K. Levenberg (1944) and D. W. Marquardt, "An Algorithm for Least-Squares
/// Estimation of Nonlinear Parameters", J. Soc. Indust. Appl. Math. 11 (1963); derivatives by
/// differences. What it gives is never worse than the start.
[[nodiscard]] std::vector<double>
minimised(std::vector<double> start, std::size_t count, const Residuals& residuals, int steps);

} // namespace LeastSquares
