#pragma once

#include <array>
#include <cstddef>

/// A smooth curve that rises from 0, given by how steep it is between a few places. Immutable; any
/// thread.
class ToneCurve final
{
public:
    static constexpr std::size_t kPieces = 6;
    /// Where the pieces begin and end, in sRGB encoded values (0..1): closer in the shadows, where
    /// cameras bend their curves most.
    static constexpr std::array<double, kPieces + 1> kKnots{0.0, 0.1, 0.25, 0.45, 0.65, 0.85, 1.0};
    using Slopes = std::array<double, kPieces>;

    /// The mean slope of each piece, all positive.
    explicit ToneCurve(const Slopes& slopes);

    /// The curve at `x`, 0 below 0 and what it is at 1 above 1. It never falls: cubic Hermite
    /// pieces with the tangents of F. N. Fritsch and J. Butland, "A Method for Constructing Local
    /// Monotone Piecewise Cubic Interpolants", SIAM J. Sci. Stat. Comput. 5 (1984).
    [[nodiscard]] double at(double x) const;

private:
    std::array<double, kPieces + 1> m_values{};
    std::array<double, kPieces + 1> m_tangents{};
};
