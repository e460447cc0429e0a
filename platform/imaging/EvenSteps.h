#pragma once

#include <QPoint>

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

    explicit EvenSteps(const std::vector<Sample>& samples);

    /// The length of the step at a place.
    [[nodiscard]] double lengthAt(QPoint place) const;

private:
    // Right and down: at the first place, more by each column, more by each row.
    std::vector<double> m_right;
    std::vector<double> m_down;
};
