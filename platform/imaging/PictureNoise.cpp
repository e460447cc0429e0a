#include "PictureNoise.h"

#include "Correlation.h"
#include "MarkedCells.h"
#include "SrgbTransfer.h"

#include <QPoint>
#include <QRect>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>
#include <vector>

namespace
{

/// Smaller pictures hold too little to prove anything.
constexpr int kSmallestNoise = 24;

constexpr int kBandRows = 16;

/// Neighbours in small pictures of scenes correlate by 0.7 and more, those of noise by about 0.
constexpr double kNoiseNeighbours = 0.25;

/// Mean step between neighbouring pixels at full size (0..1). Measured: values by chance 0.17 and
/// more; a dark frame or a sky of stars below 0.08, since most of it is black.
constexpr double kNoiseStep = 0.12;

/// Values by chance are as often light as dark; clipping makes them lighter.
constexpr double kDarkestNoise = 0.3;

/// Nothing but noise around black in fewer pixels than any camera's sensor has is what is left of
/// a file that was cut down.
constexpr qint64 kSmallestPhoto = 640LL * 480;
constexpr double kBlackMean = 0.01;
constexpr double kBlackStep = 0.001;

double meanStep(const Bitmap& bitmap)
{
    // A few hundred rows are enough, spread over the picture.
    const int rowStep = std::max(1, bitmap.pixelsHigh() / 256);
    const SrgbTransfer& tables = SrgbTransfer::tables();
    const bool linear = bitmap.transfer() == Transfer::Linear;
    const auto encoded = [&](quint16 value) { return linear ? tables.encoded(value) : value; };
    double sum = 0.0;
    double count = 0.0;
    for (int y = 0; y < bitmap.pixelsHigh(); y += rowStep) {
        const auto row = bitmap.row(y);
        for (std::size_t i = 4; i < row.size(); i += 3) {
            sum += std::abs(encoded(row[i]) - encoded(row[i - 3])) / 65535.0;
            count += 1.0;
        }
    }
    return count > 0.0 ? sum / count : 0.0;
}

/// Green of a part of a picture, encoded, 0..1.
class Part final
{
public:
    Part(const Bitmap& bitmap, const QRect& area)
        : m_size(area.size())
    {
        const SrgbTransfer& tables = SrgbTransfer::tables();
        const bool isLinear = bitmap.transfer() == Transfer::Linear;
        m_values.reserve(static_cast<std::size_t>(m_size.width()) *
                         static_cast<std::size_t>(m_size.height()));
        for (int y = area.top(); y <= area.bottom(); ++y) {
            const quint16* value = &bitmap.row(y)[3 * static_cast<std::size_t>(area.left()) + 1];
            for (int x = 0; x < m_size.width(); ++x, value += 3) {
                const int green = isLinear ? tables.encoded(*value) : *value;
                m_values.push_back(static_cast<float>(green) / 65535.0F);
            }
        }
    }

    /// Whether pixels two apart have nothing in common, across and down: at less the interpolation
    /// of colours makes them alike.
    [[nodiscard]] bool isNoise() const
    {
        // Measured: values by chance 0.19 and more, the largest sensitivities of cameras 0.11.
        constexpr double kStep = 0.15;
        constexpr double kRelated = 0.25;
        return stepAcross() >= kStep && correlation(2, 0) < kRelated &&
               correlation(0, 2) < kRelated;
    }

private:
    /// The mean one between pixels two apart.
    [[nodiscard]] double stepAcross() const
    {
        float steps = 0.0F;
        int count = 0;
        for (int y = 0; y < m_size.height(); ++y) {
            for (int x = 0; x + 2 < m_size.width(); ++x, ++count) {
                steps += std::abs(at(x, y) - at(x + 2, y));
            }
        }
        return count > 0 ? static_cast<double>(steps) / count : 0.0;
    }

    [[nodiscard]] double correlation(int right, int down) const
    {
        std::vector<float> first;
        std::vector<float> second;
        for (int y = 0; y + down < m_size.height(); ++y) {
            for (int x = 0; x + right < m_size.width(); ++x) {
                first.push_back(at(x, y));
                second.push_back(at(x + right, y + down));
            }
        }
        return Correlation::ofValues(first, second);
    }

    [[nodiscard]] float at(int x, int y) const
    {
        const int place = y * m_size.width() + x;
        return m_values[static_cast<std::size_t>(place)];
    }

    QSize m_size;
    std::vector<float> m_values;
};

} // namespace

bool PictureNoise::isNoise(const SmallPicture& small, QSize size, const Bitmap& rows)
{
    if (small.width() < kSmallestNoise || small.height() < kSmallestNoise) {
        return false;
    }
    if (small.neighbourCorrelation() >= kNoiseNeighbours) {
        return false;
    }
    const double step = meanStep(rows);
    const bool isRemnant = qint64{size.width()} * size.height() < kSmallestPhoto &&
                           small.mean() < kBlackMean && step >= kBlackStep;
    return isRemnant || (step >= kNoiseStep && small.mean() >= kDarkestNoise);
}

bool PictureNoise::isNoiseInPlaces(const Bitmap& rows)
{
    constexpr int kColumns = 16;
    constexpr int kShare = 16;
    const int bands = rows.pixelsHigh() / kBandRows;
    const int width = rows.pixelsWide() / kColumns;
    if (bands == 0 || width < kSmallestNoise / 2) {
        return false;
    }
    std::vector<bool> marks;
    for (int place = 0; place < bands * kColumns; ++place) {
        const QPoint corner(place % kColumns * width, place / kColumns * kBandRows);
        // Wider places would tell no more.
        const QSize size(std::min(width, 4 * kBandRows), kBandRows);
        marks.push_back(Part(rows, QRect(corner, size)).isNoise());
    }
    return MarkedCells(kColumns, std::move(marks)).largestPatch() * kShare >= bands * kColumns;
}

Bitmap PictureNoise::someRows(QSize size, const std::function<Bitmap(int from, int end)>& rowsOf)
{
    constexpr int kBands = 16;
    if (size.height() <= kBands * kBandRows) {
        return rowsOf(0, size.height());
    }
    Bitmap rows;
    for (int band = 0; band < kBands; ++band) {
        const int from =
            static_cast<int>(qint64{band} * (size.height() - kBandRows) / (kBands - 1));
        const Bitmap part = rowsOf(from, from + kBandRows);
        if (rows.isNull()) {
            rows = Bitmap(size.width(), kBands * kBandRows, part.transfer());
        }
        for (int y = 0; y < kBandRows; ++y) {
            std::ranges::copy(part.row(y), rows.row(band * kBandRows + y).begin());
        }
    }
    return rows;
}

Bitmap PictureNoise::someRows(const Bitmap& bitmap)
{
    return someRows(bitmap.size(), [&](int from, int end) {
        Bitmap part(bitmap.pixelsWide(), end - from, bitmap.transfer());
        for (int y = from; y < end; ++y) {
            std::ranges::copy(bitmap.row(y), part.row(y - from).begin());
        }
        return part;
    });
}
