#include "ByteAverages.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>
#include <vector>

namespace
{

/// A column of 16 pixels sums up to less than 65536.
using Sums = std::vector<quint16>;

void addRow(const uchar* __restrict row, std::span<quint16> sums)
{
    quint16* __restrict const into = sums.data();
    const std::size_t count = sums.size();
    for (std::size_t i = 0; i < count; ++i) {
        into[i] = static_cast<quint16>(into[i] + row[i]);
    }
}

/// The means of squares of `kSide` columns, whose rows `sums` holds together. Compilers divide by a
/// number that they know many times as fast.
template <int kSide>
void meanRow(const quint16* sums, std::span<uchar> into)
{
    constexpr quint32 kPixels = kSide * kSide;
    for (std::size_t i = 0; i < into.size(); i += 3, sums += std::ptrdiff_t{3} * kSide) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            quint32 sum = 0;
            for (std::size_t x = 0; x < kSide; ++x) {
                sum += sums[3 * x + channel];
            }
            into[i + channel] = static_cast<uchar>((sum + kPixels / 2) / kPixels);
        }
    }
}

/// That for each side from 1 on.
constexpr auto kMeanRows = []<std::size_t... kIndexes>(std::index_sequence<kIndexes...>)
{
    return std::array{&meanRow<static_cast<int>(kIndexes) + 1>...};
}
(std::make_index_sequence<ByteAverages::kMostSide>());

} // namespace

QImage ByteAverages::of(const QImage& picture, int side)
{
    Q_ASSERT(picture.format() == QImage::Format_RGB888 && side >= 1 && side <= 16);
    const int width = picture.width();
    const int height = picture.height();
    QImage means((width + side - 1) / side, (height + side - 1) / side, QImage::Format_RGB888);
    if (means.isNull()) {
        return means;
    }
    const auto meanRow = kMeanRows.at(static_cast<std::size_t>(side) - 1);
    const auto values = std::size_t{3} * static_cast<std::size_t>(width);
    const auto valuesOfMeans = std::size_t{3} * static_cast<std::size_t>(means.width());
    Sums sums(valuesOfMeans * static_cast<std::size_t>(side));
    for (int y = 0; y < means.height(); ++y) {
        std::ranges::fill(sums, quint16{0});
        for (int line = y * side; line < (y + 1) * side; ++line) {
            addRow(picture.constScanLine(std::min(line, height - 1)),
                   std::span(sums).first(values));
        }
        for (std::size_t i = values; i < sums.size(); ++i) {
            sums[i] = sums[i - 3];
        }
        meanRow(sums.data(), {means.scanLine(y), valuesOfMeans});
    }
    return means;
}
