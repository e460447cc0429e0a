#pragma once

#include "BayerKernels.h"
#include "BayerMosaic.h"

#include <array>
#include <cstddef>
#include <vector>

/// The rows of light of a band of a mosaic, made as they are needed and kept while they are
/// neighbours of one that is. Rows and columns count from the kept area's corner; those of the
/// sensor around it are real, those beyond the visible area reflected. One object serves one
/// thread; the mosaic must outlive it.
class BayerRows final
{
public:
    /// Pairs of columns beyond each end of a row, for what is looked up at its neighbours.
    static constexpr int kMargin = 2;

    /// Rows above and below that the pixels of a row depend on: two for the greens of the rows
    /// beside.
    static constexpr int kReach = 3;

    /// Half a row: the columns of one parity, with margins.
    using HalfRow = std::vector<float>;

    struct Row {
        HalfRow even;
        HalfRow odd;
        HalfRow green;      ///< at the sites
        HalfRow difference; ///< of the sites to that
        bool siteIsEven{false};
        bool siteIsRed{false};

        [[nodiscard]] const HalfRow& sites() const { return siteIsEven ? even : odd; }

        [[nodiscard]] const HalfRow& greens() const { return siteIsEven ? odd : even; }
    };

    explicit BayerRows(const BayerMosaic& mosaic);

    /// One of the last kKeptRows that were prepared.
    [[nodiscard]] const Row& row(int y) const
    {
        return m_rows[static_cast<std::size_t>(y) % kKeptRows];
    }

    /// Makes the light of row `y`.
    void prepare(int y);

    /// Green at the sites of row `y`; two rows above and below must have been prepared.
    void fillGreens(int y);

    /// Pairs of columns of a row, with margins.
    [[nodiscard]] int pairs() const { return m_pairs; }

private:
    /// A power of two of at least 2 * kReach + 1 rows.
    static constexpr int kKeptRows = 8;

    [[nodiscard]] BayerKernels::Light lightOf(std::size_t filter) const;
    void prepareReflected(const quint16* values,
                          int column,
                          BayerKernels::Light first,
                          BayerKernels::Light second,
                          int pair,
                          Row& row) const;

    const BayerMosaic& m_mosaic;
    int m_pairs;
    std::array<Row, kKeptRows> m_rows;
};
