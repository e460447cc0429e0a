#include "LeastSquares.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <optional>

namespace
{

/// Of the numbers, for the derivatives. Larger than what rounding makes of residuals.
constexpr double kDifference = 1e-3;

/// An improvement of the sum by less than this part ends the search.
constexpr double kLeastGain = 3e-4;

using Numbers = std::vector<double>;

/// In several sums, which compilers can add to at the same time.
double product(std::span<const double> one, std::span<const double> other)
{
    constexpr std::size_t kSums = 4;
    const std::size_t whole = one.size() / kSums * kSums;
    std::array<double, kSums> sums{};
    for (std::size_t i = 0; i < whole; i += kSums) {
        for (std::size_t part = 0; part < kSums; ++part) {
            sums[part] += one[i + part] * other[i + part];
        }
    }
    for (std::size_t i = whole; i < one.size(); ++i) {
        sums[0] += one[i] * other[i];
    }
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

/// Solves a symmetric positive definite system in place, by Cholesky's decomposition; false where
/// it is none. `matrix` holds rows.
bool solve(std::vector<Numbers>& matrix, Numbers& right)
{
    const std::size_t size = right.size();
    for (std::size_t row = 0; row < size; ++row) {
        for (std::size_t column = 0; column <= row; ++column) {
            const double rest =
                matrix[row][column] - product(std::span(matrix[row]).first(column),
                                              std::span(matrix[column]).first(column));
            if (column < row) {
                matrix[row][column] = rest / matrix[column][column];
            } else if (rest > 0.0) {
                matrix[row][row] = std::sqrt(rest);
            } else {
                return false;
            }
        }
        right[row] =
            (right[row] - product(std::span(matrix[row]).first(row), std::span(right).first(row))) /
            matrix[row][row];
    }
    for (std::size_t row = size; row-- > 0;) {
        for (std::size_t below = row + 1; below < size; ++below) {
            right[row] -= matrix[below][row] * right[below];
        }
        right[row] /= matrix[row][row];
    }
    return true;
}

/// The slope of all residuals along each number.
std::vector<Numbers>
slopes(const Numbers& at, const Numbers& residuals, const LeastSquares::Residuals& of)
{
    std::vector<Numbers> all(at.size(), Numbers(residuals.size()));
    Numbers moved = at;
    for (std::size_t i = 0; i < at.size(); ++i) {
        moved[i] = at[i] + kDifference;
        of(moved, all[i]);
        moved[i] = at[i];
        std::ranges::transform(all[i], residuals, all[i].begin(), [](double there, double here) {
            return (there - here) / kDifference;
        });
    }
    return all;
}

/// The products of all slopes with each other, below the diagonal and on it.
std::vector<Numbers> productsOf(const std::vector<Numbers>& along)
{
    std::vector<Numbers> matrix(along.size(), Numbers(along.size()));
    for (std::size_t row = 0; row < along.size(); ++row) {
        for (std::size_t column = 0; column <= row; ++column) {
            matrix[row][column] = product(along[row], along[column]);
        }
    }
    return matrix;
}

/// Where the damped step from `at` leads; nothing where there is none.
std::optional<Numbers>
stepFrom(const Numbers& at, std::vector<Numbers> matrix, Numbers down, double damping)
{
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        matrix[i][i] *= 1.0 + damping;
    }
    if (!solve(matrix, down)) {
        return std::nullopt;
    }
    std::ranges::transform(at, down, down.begin(), std::plus<double>());
    return down;
}

} // namespace

std::vector<double> LeastSquares::minimised(std::vector<double> start,
                                            std::size_t count,
                                            const Residuals& residuals,
                                            int steps)
{
    constexpr double kMostDamping = 1e6;
    Numbers best = std::move(start);
    Numbers left(count);
    residuals(best, left);
    Numbers after(count);
    double sum = product(left, left);
    double damping = 1e-3;
    for (int step = 0; step < steps; ++step) {
        const std::vector<Numbers> along = slopes(best, left, residuals);
        const std::vector<Numbers> products = productsOf(along);
        Numbers down;
        for (const Numbers& slope : along) {
            down.push_back(-product(slope, left));
        }
        double gained = 0.0;
        for (; gained <= 0.0 && damping < kMostDamping; damping *= 4.0) {
            auto moved = stepFrom(best, products, down, damping);
            if (!moved) {
                continue;
            }
            residuals(*moved, after);
            const double sumAfter = product(after, after);
            if (sumAfter < sum) {
                gained = (sum - sumAfter) / sum;
                best = std::move(*moved);
                left.swap(after);
                sum = sumAfter;
                damping /= 32.0;
            }
        }
        if (gained < kLeastGain) {
            break;
        }
    }
    return best;
}
