#include "ToneCurve.h"

#include <algorithm>

ToneCurve::ToneCurve(const Slopes& slopes)
{
    const auto length = [](std::size_t piece) { return kKnots.at(piece + 1) - kKnots.at(piece); };
    for (std::size_t piece = 0; piece < kPieces; ++piece) {
        m_values.at(piece + 1) = m_values.at(piece) + slopes.at(piece) * length(piece);
    }
    m_tangents.front() = slopes.front();
    m_tangents.back() = slopes.back();
    for (std::size_t knot = 1; knot < kPieces; ++knot) {
        const double before = length(knot - 1);
        const double after = length(knot);
        // The weighted harmonic mean of the slopes at both sides.
        const double nearer = 2.0 * after + before;
        const double farther = after + 2.0 * before;
        m_tangents.at(knot) =
            (nearer + farther) / (nearer / slopes.at(knot - 1) + farther / slopes.at(knot));
    }
}

double ToneCurve::at(double x) const
{
    const double inside = std::clamp(x, 0.0, 1.0);
    const auto* const next = std::upper_bound(kKnots.begin() + 1, kKnots.end() - 1, inside);
    const auto piece = static_cast<std::size_t>(next - kKnots.begin()) - 1;
    const double length = kKnots.at(piece + 1) - kKnots.at(piece);
    const double t = (inside - kKnots.at(piece)) / length;
    const double rest = 1.0 - t;
    return rest * rest *
               ((1.0 + 2.0 * t) * m_values.at(piece) + t * length * m_tangents.at(piece)) +
           t * t *
               ((3.0 - 2.0 * t) * m_values.at(piece + 1) -
                rest * length * m_tangents.at(piece + 1));
}
