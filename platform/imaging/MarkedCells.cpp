#include "MarkedCells.h"

#include <algorithm>
#include <iterator>
#include <utility>

MarkedCells::MarkedCells(int width, std::vector<bool> marks)
    : m_width(width)
    , m_marks(std::move(marks))
{
}

int MarkedCells::largestPatch() const
{
    std::vector<bool> marks = m_marks;
    int largest = 0;
    for (std::size_t cell = 0; cell < marks.size(); ++cell) {
        largest = std::max(largest, takePatch(static_cast<int>(cell), m_width, marks));
    }
    return largest;
}

int MarkedCells::takePatch(int first, int width, std::vector<bool>& marks)
{
    int found = 0;
    std::vector<int> next; // cells whose neighbours are not looked at yet
    const auto take = [&](int cell) {
        if (cell >= 0 && cell < std::ssize(marks) && marks[static_cast<std::size_t>(cell)]) {
            marks[static_cast<std::size_t>(cell)] = false;
            next.push_back(cell);
            ++found;
        }
    };
    take(first);
    while (!next.empty()) {
        const int cell = next.back();
        next.pop_back();
        take(cell - width);
        take(cell + width);
        if (cell % width > 0) {
            take(cell - 1);
        }
        if (cell % width < width - 1) {
            take(cell + 1);
        }
    }
    return found;
}
