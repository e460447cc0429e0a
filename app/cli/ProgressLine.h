#pragma once

#include <QString>

/// How far a run is.
struct ProgressState {
    QString activity;      ///< such as "Converting"
    qint64 position{0};    ///< the number of the item worked on, from 1
    qint64 total{0};       ///< number of items
    QString timeRemaining; ///< empty where nothing is known
    QString name;          ///< of the item worked on
};

/// The line of progress on a terminal.
namespace ProgressLine
{

/// Between two drawings: more often than the eye follows costs time for nothing.
inline constexpr int kShortestPauseMilliseconds = 100;

/// Activity, bar, count, time remaining and name in at most `columns` - 1 columns, so that the
/// terminal does not wrap; what does not fit is left out, the name first cut.
[[nodiscard]] QString render(const ProgressState& state, int columns);

} // namespace ProgressLine
