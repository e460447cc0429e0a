#include "BayerRenderer.h"

#include "BayerKernels.h"
#include "BayerRows.h"
#include "ReducedPicture.h"
#include "RowBands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <new>
#include <span>
#include <vector>

namespace
{

using BayerKernels::Matrix;
using Row = BayerRows::Row;

constexpr int kMargin = BayerRows::kMargin;
constexpr int kReach = BayerRows::kReach;

Matrix floats(const ColorMatrix& matrix)
{
    Matrix into{};
    std::ranges::transform(
        matrix, into.begin(), [](double value) { return static_cast<float>(value); });
    return into;
}

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
template <typename Value, typename Tone>
void writeRow(const Pixels& even, const Pixels& odd, std::span<Value> into, const Tone& tone)
{
    const std::size_t pairs = into.size() / 6;
    Value* value = into.data();
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

/// The rows [from, end) of the picture, each written to what `rowOf` gives for it.
template <typename RowOf, typename Tone>
void renderBand(const BayerMosaic& mosaic,
                int from,
                int end,
                const Matrix& matrix,
                const Tone& tone,
                const RowOf& rowOf)
{
    BayerRows rows(mosaic);
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
        writeRow(
            here.siteIsEven ? sites : greens, here.siteIsEven ? greens : sites, rowOf(y), tone);
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

/// Adds up a row's blocks of cells from the one at `left` on, as many as there are sums.
void addBlocks(const BayerKernels::Cells& cells,
               int left,
               int block,
               std::vector<std::array<double, 3>>& sums)
{
    int place = left;
    for (std::array<double, 3>& sum : sums) {
        sum[0] += sumOf(cells.red + place, block);
        sum[1] +=
            (sumOf(cells.firstGreen + place, block) + sumOf(cells.secondGreen + place, block)) /
            2.0;
        sum[2] += sumOf(cells.blue + place, block);
        place += block;
    }
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

QImage BayerRenderer::rendered(const Rendition& rendition) const
{
    QImage picture(size(), QImage::Format_RGB888);
    if (picture.isNull()) {
        throw std::bad_alloc();
    }
    const Matrix matrix = floats(total(rendition.matrix()));
    const std::vector<quint8> tones = rendition.byteTones();
    const auto tone = [&tones](quint16 light) { return tones[light]; };
    // Taken once: each call of QImage's own would write to what the threads share.
    uchar* const pixels = picture.bits();
    const qsizetype stride = picture.bytesPerLine();
    const auto rowOf = [&](int y) {
        return std::span(pixels + y * stride, static_cast<std::size_t>(3 * size().width()));
    };
    RowBands::run(
        size().height(),
        [&](int from, int end) { renderBand(m_mosaic, from, end, matrix, tone, rowOf); },
        m_threads);
    return picture;
}

Bitmap BayerRenderer::linear(const ColorMatrix& matrix) const
{
    Bitmap picture(size().width(), size().height(), Transfer::Linear);
    const Matrix all = floats(total(matrix));
    const auto rowOf = [&](int y) { return picture.row(y); };
    RowBands::run(
        size().height(),
        [&](int from, int end) { renderBand(m_mosaic, from, end, all, std::identity(), rowOf); },
        m_threads);
    return picture;
}

Bitmap BayerRenderer::linearRows(int from, int end) const
{
    Bitmap picture(size().width(), end - from, Transfer::Linear);
    const auto rowOf = [&](int y) { return picture.row(y - from); };
    renderBand(m_mosaic, from, end, floats(m_toSrgb), std::identity(), rowOf);
    return picture;
}

Bitmap BayerRenderer::halved(const ColorMatrix& matrix) const
{
    Bitmap picture(halfSize().width(), halfSize().height(), Transfer::Linear);
    const Matrix all = floats(total(matrix));
    RowBands::run(
        picture.pixelsHigh(),
        [&](int from, int end) {
            BayerRows rows(m_mosaic);
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
    const QSize into(halfSize().width() / block, halfSize().height() / block); // whole blocks
    const int left = halfSize().width() % block / 2;
    const int top = halfSize().height() % block / 2;
    Bitmap picture(into.width(), into.height(), Transfer::Linear);
    BayerMosaic unbalanced = m_mosaic;
    unbalanced.balance = {1.0F, 1.0F, 1.0F};
    const auto work = [&](int from, int end) {
        BayerRows rows(unbalanced);
        std::vector<std::array<double, 3>> sums(static_cast<std::size_t>(into.width()));
        for (int y = from; y < end; ++y) {
            std::ranges::fill(sums, std::array<double, 3>{});
            for (int line = 0; line < block; ++line) {
                const int row = 2 * (top + y * block + line);
                rows.prepare(row);
                rows.prepare(row + 1);
                addBlocks(cellsOf(rows.row(row), rows.row(row + 1)), left, block, sums);
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
