#include "SensorGaps.h"

#include "MarkedCells.h"

#include <QPoint>
#include <QRect>

#include <algorithm>
#include <utility>
#include <vector>

namespace
{

// Low cells, since strips of rows are what files lose.
constexpr int kColumns = 16;
constexpr int kRows = 128;

/// Cells of the smallest gap that is told: any sixteenth of the data holds as many.
constexpr int kSmallestGap = 6 * kColumns;

/// Pixels of a cell's row at least.
constexpr int kNarrowestCell = 8;

/// What the values of a cell say.
enum class CellState : quint8 {
    Alive,    ///< they differ, or are clipped to white
    Constant, ///< they do not, as where shadows are clipped to black, or data were made small
    Gone,     ///< they do not, and a sensor's would
};

/// The part of a length that is `index` of `of`.
int partOf(int length, int index, int of)
{
    return static_cast<int>(qint64{index} * length / of);
}

/// Whether each pixel of the area is as its first one.
bool isConstant(const SensorValues& values, const QRect& area)
{
    const auto pixel = static_cast<qsizetype>(values.channels);
    const quint16* const corner = values.first + area.top() * values.stride + area.left() * pixel;
    const qsizetype length = area.width() * pixel;
    for (int y = 0; y < area.height(); ++y) {
        const quint16* const row = corner + y * values.stride;
        if (!std::equal(corner, corner + pixel, row) ||
            !std::equal(row + pixel, row + length, row)) {
            return false;
        }
    }
    return true;
}

CellState stateOf(const SensorValues& values, int column, int row)
{
    const QPoint from(partOf(values.size.width(), column, kColumns),
                      partOf(values.size.height(), row, kRows));
    const QPoint end(partOf(values.size.width(), column + 1, kColumns),
                     partOf(values.size.height(), row + 1, kRows));
    if (!isConstant(values, QRect(from, QSize(end.x() - from.x(), end.y() - from.y())))) {
        return CellState::Alive;
    }
    const quint16* const pixel =
        values.first + from.y() * values.stride + qsizetype{from.x()} * values.channels;
    const int light = *std::max_element(pixel, pixel + values.channels) - values.black;
    const int most = values.white - values.black;
    // Light that clips, in any channel, is far above the middle.
    if (2 * light > most) {
        return CellState::Alive;
    }
    const bool isClippedAtBlack = light >= 0 && 32 * light <= most;
    return isClippedAtBlack || values.channels > 1 ? CellState::Constant : CellState::Gone;
}

} // namespace

bool SensorGaps::isFoundIn(const SensorValues& values)
{
    if (values.size.width() < kColumns * kNarrowestCell || values.size.height() < kRows) {
        return false;
    }
    std::vector<bool> marks;
    for (int row = 0; row < kRows; ++row) {
        std::vector<CellState> cells;
        cells.reserve(kColumns);
        for (int column = 0; column < kColumns; ++column) {
            cells.push_back(stateOf(values, column, row));
        }
        const bool isWhole =
            std::ranges::none_of(cells, [](CellState cell) { return cell == CellState::Alive; });
        for (const CellState cell : cells) {
            marks.push_back(isWhole || cell == CellState::Gone);
        }
    }
    return MarkedCells(kColumns, std::move(marks)).largestPatch() >= kSmallestGap;
}
