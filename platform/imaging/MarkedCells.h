#pragma once

#include <vector>

/// Cells of a grid, row by row, that are marked or not. A value type.
class MarkedCells final
{
public:
    /// `marks`: whole rows of `width` cells.
    MarkedCells(int width, std::vector<bool> marks);

    /// How many cells the largest patch has of marked ones that touch by a side.
    [[nodiscard]] int largestPatch() const;

private:
    /// The size of the patch that the cell belongs to. Unmarks it.
    [[nodiscard]] static int takePatch(int first, int width, std::vector<bool>& marks);

    int m_width;
    std::vector<bool> m_marks;
};
