#pragma once

#include <QPoint>

#include <optional>
#include <vector>

/// How far the places of one picture lie from those of another that was cropped, zoomed or turned a
/// little: steps that change evenly over columns and rows, fitted to those of some places by least
/// squares. A value type.
class EvenSteps final
{
public:
    struct Sample {
        QPoint place; ///< column and row
        QPoint step;
    };

    /// Nothing where the samples do not tell: they stand in fewer than three rows or three columns
    /// of two or more, or their steps, which are whole, do not change evenly.
    [[nodiscard]] static std::optional<EvenSteps> of(const std::vector<Sample>& samples);

    /// The length of the step at a place.
    [[nodiscard]] double lengthAt(QPoint place) const;

private:
    explicit EvenSteps(const std::vector<Sample>& samples);

    /// The root of the mean square of what the samples lie off.
    [[nodiscard]] double deviationOf(const std::vector<Sample>& samples) const;

    // Right and down: at the first place, more by each column, more by each row.
    std::vector<double> m_right;
    std::vector<double> m_down;
};
