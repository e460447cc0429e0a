#include "BayerRows.h"

#include <algorithm>

namespace
{

/// A place beyond an end is the one as far inside, which has the same filter.
int reflected(int place, int length)
{
    const int inside = place < 0 ? -place : place;
    return inside < length ? inside : 2 * (length - 1) - inside;
}

} // namespace

BayerRows::BayerRows(const BayerMosaic& mosaic)
    : m_mosaic(mosaic)
    , m_pairs((mosaic.kept.width() + 1) / 2 + 2 * kMargin)
{
    for (Row& row : m_rows) {
        for (HalfRow* half : {&row.even, &row.odd, &row.green, &row.difference}) {
            half->resize(static_cast<std::size_t>(m_pairs));
        }
    }
}

void BayerRows::prepare(int y)
{
    Row& row = m_rows[static_cast<std::size_t>(y) % kKeptRows];
    const int source = reflected(m_mosaic.kept.top() + y, m_mosaic.visible.height());
    const int left = m_mosaic.kept.left() - 2 * kMargin;
    const auto parity = 2 * static_cast<std::size_t>(source & 1);
    const auto even = parity + static_cast<std::size_t>(left & 1);
    const auto odd = parity + static_cast<std::size_t>(1 - (left & 1));
    const BayerKernels::Light first = lightOf(even);
    const BayerKernels::Light second = lightOf(odd);
    const quint16* const values = m_mosaic.values + source * m_mosaic.stride;
    const int begin = std::clamp((1 - left) / 2, 0, m_pairs);
    const int end = std::clamp((m_mosaic.visible.width() - left) / 2, begin, m_pairs);
    BayerKernels::prepare(values + left + std::ptrdiff_t{2} * begin,
                          end - begin,
                          first,
                          second,
                          row.even.data() + begin,
                          row.odd.data() + begin);
    for (int pair = 0; pair < m_pairs; ++pair) {
        if (pair == begin) {
            pair = end;
        }
        if (pair < m_pairs) {
            prepareReflected(values, left + 2 * pair, first, second, pair, row);
        }
    }
    row.siteIsEven = m_mosaic.colors.at(even) != BayerMosaic::Green;
    row.siteIsRed = m_mosaic.colors.at(row.siteIsEven ? even : odd) == BayerMosaic::Red;
}

void BayerRows::fillGreens(int y)
{
    Row& here = m_rows[static_cast<std::size_t>(y) % kKeptRows];
    const int shift = here.siteIsEven ? 1 : 0;
    BayerKernels::greensAtSites({.site = here.sites().data() + 1,
                                 .left = here.greens().data() + 1 - shift,
                                 .right = here.greens().data() + 2 - shift,
                                 .above = row(y - 1).greens().data() + 1,
                                 .below = row(y + 1).greens().data() + 1,
                                 .twoAbove = row(y - 2).sites().data() + 1,
                                 .twoBelow = row(y + 2).sites().data() + 1},
                                m_pairs - 2,
                                here.green.data() + 1,
                                here.difference.data() + 1);
}

BayerKernels::Light BayerRows::lightOf(std::size_t filter) const
{
    return {.black = m_mosaic.black.at(filter),
            .scale = m_mosaic.scale.at(filter) * m_mosaic.balance.at(m_mosaic.colors.at(filter)),
            .white = m_mosaic.white};
}

void BayerRows::prepareReflected(const quint16* values,
                                 int column,
                                 BayerKernels::Light first,
                                 BayerKernels::Light second,
                                 int pair,
                                 Row& row) const
{
    const std::array<quint16, 2> both{values[reflected(column, m_mosaic.visible.width())],
                                      values[reflected(column + 1, m_mosaic.visible.width())]};
    BayerKernels::prepare(
        both.data(), 1, first, second, row.even.data() + pair, row.odd.data() + pair);
}
