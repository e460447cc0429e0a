#include "BayerRenderer.h"

#include "BayerKernels.h"
#include "ReducedPicture.h"
#include "RowBands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace
{

using BayerKernels::Matrix;

/// Pairs of columns beyond each end of a row, for what is looked up at its neighbours.
constexpr int kMargin = 2;

/// Rows above and below that the pixels of a row depend on: two for the greens of the rows beside.
constexpr int kReach = 3;

/// A power of two of at least 2 * kReach + 1 rows.
constexpr int kKeptRows = 8;

/// A place beyond an end is the one as far inside, which has the same filter.
int reflected(int place, int length)
{
    const int inside = place < 0 ? -place : place;
    return inside < length ? inside : 2 * (length - 1) - inside;
}

Matrix floats(const ColorMatrix& matrix)
{
    Matrix into{};
    std::ranges::transform(
        matrix, into.begin(), [](double value) { return static_cast<float>(value); });
    return into;
}

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

/// The rows of one band, made as they are needed. Rows and columns count from the kept area's
/// corner; those of the sensor around it are real, those beyond the visible area reflected.
class BandOfRows final
{
public:
    explicit BandOfRows(const BayerMosaic& mosaic)
        : m_mosaic(mosaic)
        , m_pairs((mosaic.kept.width() + 1) / 2 + 2 * kMargin)
    {
        for (Row& row : m_rows) {
            for (HalfRow* half : {&row.even, &row.odd, &row.green, &row.difference}) {
                half->resize(static_cast<std::size_t>(m_pairs));
            }
        }
    }

    [[nodiscard]] const Row& row(int y) const
    {
        return m_rows[static_cast<std::size_t>(y) % kKeptRows];
    }

    /// The light of row `y`.
    void prepare(int y)
    {
        Row& row = m_rows[static_cast<std::size_t>(y) % kKeptRows];
        const int source = reflected(m_mosaic.kept.top() + y, m_mosaic.visible.height());
        const int left = m_mosaic.kept.left() - 2 * kMargin;
        const auto parity = static_cast<std::size_t>(2 * (source & 1));
        const auto even = parity + static_cast<std::size_t>(left & 1);
        const auto odd = parity + static_cast<std::size_t>(1 - (left & 1));
        const BayerKernels::Light first = lightOf(even);
        const BayerKernels::Light second = lightOf(odd);
        const quint16* const values = m_mosaic.values + source * m_mosaic.stride;
        const int begin = std::clamp((1 - left) / 2, 0, m_pairs);
        const int end = std::clamp((m_mosaic.visible.width() - left) / 2, begin, m_pairs);
        BayerKernels::prepare(values + left + 2 * begin,
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

    /// Green at the sites of row `y`; two rows above and below must have been prepared.
    void fillGreens(int y)
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

    [[nodiscard]] int pairs() const { return m_pairs; }

private:
    [[nodiscard]] BayerKernels::Light lightOf(std::size_t filter) const
    {
        return {.black = m_mosaic.black.at(filter),
                .scale =
                    m_mosaic.scale.at(filter) * m_mosaic.balance.at(m_mosaic.colors.at(filter)),
                .white = m_mosaic.white};
    }

    void prepareReflected(const quint16* values,
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

    const BayerMosaic& m_mosaic;
    int m_pairs;
    std::array<Row, kKeptRows> m_rows;
};

/// Planar pixels of half a row.
struct Pixels {
    explicit Pixels(int count)
        : red(static_cast<std::size_t>(count))
        , green(static_cast<std::size_t>(count))
        , blue(static_cast<std::size_t>(count))
    {
    }

    [[nodiscard]] BayerKernels::Planes planes()
    {
        return {.red = red.data(), .green = green.data(), .blue = blue.data()};
    }

    std::vector<quint16> red;
    std::vector<quint16> green;
    std::vector<quint16> blue;
};

/// Interleaves the pixels of a row, each value as `tone` makes it.
template <typename Tone>
void writeRow(const Pixels& even, const Pixels& odd, std::span<quint16> into, const Tone& tone)
{
    const std::size_t pairs = into.size() / 6;
    quint16* value = into.data();
    const auto write = [&](const Pixels& pixels, std::size_t i) {
        *value++ = tone(pixels.red[i]);
        *value++ = tone(pixels.green[i]);
        *value++ = tone(pixels.blue[i]);
    };
    for (std::size_t i = 0; i < pairs; ++i) {
        write(even, i);
        write(odd, i);
    }
    if (into.size() % 6 != 0) {
        write(even, pairs);
    }
}

/// The rows [from, end) of the picture, written to `into` from its row `first` on.
template <typename Tone>
void renderBand(const BayerMosaic& mosaic,
                int from,
                int end,
                const Matrix& matrix,
                const Tone& tone,
                Bitmap& into,
                int first)
{
    BandOfRows rows(mosaic);
    const int count = rows.pairs() - 2 * kMargin;
    Pixels sites(count);
    Pixels greens(count);
    for (int y = from - kReach; y < from + kReach; ++y) {
        rows.prepare(y);
    }
    rows.fillGreens(from - 1);
    rows.fillGreens(from);
    for (int y = from; y < end; ++y) {
        rows.prepare(y + kReach);
        rows.fillGreens(y + 1);
        const Row& here = rows.row(y);
        const Row& above = rows.row(y - 1);
        const Row& below = rows.row(y + 1);
        const int left = kMargin - (here.siteIsEven ? 1 : 0);
        BayerKernels::pixelsAtSites(here.sites().data() + kMargin,
                                    here.green.data() + kMargin,
                                    {.greenAbove = above.green.data() + left,
                                     .greenBelow = below.green.data() + left,
                                     .above = above.difference.data() + left,
                                     .below = below.difference.data() + left},
                                    here.siteIsRed,
                                    count,
                                    matrix,
                                    sites.planes());
        const int before = kMargin - (here.siteIsEven ? 0 : 1);
        BayerKernels::pixelsAtGreens(here.greens().data() + kMargin,
                                     here.difference.data() + before,
                                     above.difference.data() + kMargin,
                                     below.difference.data() + kMargin,
                                     here.siteIsRed,
                                     count,
                                     matrix,
                                     greens.planes());
        writeRow(here.siteIsEven ? sites : greens,
                 here.siteIsEven ? greens : sites,
                 into.row(first + y - from),
                 tone);
    }
}

/// The light of the four filters of a row of cells.
BayerKernels::Cells cellsOf(const Row& upper, const Row& lower)
{
    const Row& red = upper.siteIsRed ? upper : lower;
    const Row& blue = upper.siteIsRed ? lower : upper;
    return {.red = red.sites().data() + kMargin,
            .firstGreen = upper.greens().data() + kMargin,
            .secondGreen = lower.greens().data() + kMargin,
            .blue = blue.sites().data() + kMargin};
}

double sumOf(const float* values, int count)
{
    float sum = 0.0F;
    for (int i = 0; i < count; ++i) {
        sum += values[i];
    }
    return static_cast<double>(sum);
}

} // namespace

BayerRenderer::BayerRenderer(const BayerMosaic& mosaic, const ColorMatrix& toSrgb)
    : m_mosaic(mosaic)
    , m_toSrgb(toSrgb)
{
    Q_ASSERT(mosaic.isValid());
}

BayerRenderer BayerRenderer::balanced(const std::array<double, 3>& gains) const
{
    BayerRenderer other = *this;
    std::ranges::transform(gains, other.m_mosaic.balance.begin(), [](double gain) {
        return static_cast<float>(gain);
    });
    return other;
}

ColorMatrix BayerRenderer::total(const ColorMatrix& matrix) const
{
    return multiplied(matrix, m_toSrgb);
}

Bitmap BayerRenderer::rendered(const Rendition& rendition) const
{
    Bitmap picture(size().width(), size().height(), Transfer::Srgb);
    const Matrix matrix = floats(total(rendition.matrix()));
    const std::span<const quint16, 65536> tones = rendition.tones();
    RowBands::run(
        size().height(),
        [&](int from, int end) {
            const auto tone = [tones](quint16 light) { return tones[light]; };
            renderBand(m_mosaic, from, end, matrix, tone, picture, from);
        },
        m_threads);
    return picture;
}

Bitmap BayerRenderer::linear(const ColorMatrix& matrix) const
{
    Bitmap picture(size().width(), size().height(), Transfer::Linear);
    const Matrix all = floats(total(matrix));
    RowBands::run(
        size().height(),
        [&](int from, int end) {
            renderBand(m_mosaic, from, end, all, std::identity(), picture, from);
        },
        m_threads);
    return picture;
}

Bitmap BayerRenderer::linearRows(int from, int end) const
{
    Bitmap picture(size().width(), end - from, Transfer::Linear);
    renderBand(m_mosaic, from, end, floats(m_toSrgb), std::identity(), picture, 0);
    return picture;
}

Bitmap BayerRenderer::halved(const ColorMatrix& matrix) const
{
    Bitmap picture(halfSize().width(), halfSize().height(), Transfer::Linear);
    const Matrix all = floats(total(matrix));
    RowBands::run(
        picture.pixelsHigh(),
        [&](int from, int end) {
            BandOfRows rows(m_mosaic);
            Pixels pixels(picture.pixelsWide());
            for (int y = from; y < end; ++y) {
                rows.prepare(2 * y);
                rows.prepare(2 * y + 1);
                BayerKernels::pixelsOfCells(cellsOf(rows.row(2 * y), rows.row(2 * y + 1)),
                                            picture.pixelsWide(),
                                            all,
                                            pixels.planes());
                quint16* value = picture.row(y).data();
                for (std::size_t i = 0; i < pixels.red.size(); ++i) {
                    *value++ = pixels.red[i];
                    *value++ = pixels.green[i];
                    *value++ = pixels.blue[i];
                }
            }
        },
        m_threads);
    return picture;
}

Bitmap BayerRenderer::reduced() const
{
    const int block = ReducedPicture::blockSide(halfSize());
    const QSize into = halfSize() / block;
    const int left = halfSize().width() % block / 2;
    const int top = halfSize().height() % block / 2;
    Bitmap picture(into.width(), into.height(), Transfer::Linear);
    BayerMosaic unbalanced = m_mosaic;
    unbalanced.balance = {1.0F, 1.0F, 1.0F};
    const auto work = [&](int from, int end) {
        BandOfRows rows(unbalanced);
        std::vector<std::array<double, 3>> sums(static_cast<std::size_t>(into.width()));
        for (int y = from; y < end; ++y) {
            std::ranges::fill(sums, std::array<double, 3>{});
            for (int line = 0; line < block; ++line) {
                const int row = 2 * (top + y * block + line);
                rows.prepare(row);
                rows.prepare(row + 1);
                const BayerKernels::Cells cells = cellsOf(rows.row(row), rows.row(row + 1));
                for (std::size_t i = 0; i < sums.size(); ++i) {
                    const int place = left + static_cast<int>(i) * block;
                    sums[i][0] += sumOf(cells.red + place, block);
                    sums[i][1] += (sumOf(cells.firstGreen + place, block) +
                                   sumOf(cells.secondGreen + place, block)) /
                                  2.0;
                    sums[i][2] += sumOf(cells.blue + place, block);
                }
            }
            quint16* value = picture.row(y).data();
            for (const auto& sum : sums) {
                for (const double light : sum) {
                    *value++ = static_cast<quint16>(std::lround(light / (block * block)));
                }
            }
        }
    };
    RowBands::run(into.height(), work, m_threads);
    return picture;
}
