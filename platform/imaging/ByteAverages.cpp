#include "ByteAverages.h"

#include <algorithm>
#include <span>
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

/// The means of squares of `side` columns, whose rows `sums` holds together.
void meanRow(const Sums& sums, int width, int side, std::span<uchar> into)
{
    const auto pixels = static_cast<quint32>(side) * static_cast<quint32>(side);
    for (std::size_t i = 0; i < into.size(); i += 3) {
        quint32 red = 0;
        quint32 green = 0;
        quint32 blue = 0;
        const int first = static_cast<int>(i / 3) * side;
        for (int x = first; x < first + side; ++x) {
            const std::size_t at = 3 * static_cast<std::size_t>(std::min(x, width - 1));
            red += sums[at];
            green += sums[at + 1];
            blue += sums[at + 2];
        }
        into[i] = static_cast<uchar>((red + pixels / 2) / pixels);
        into[i + 1] = static_cast<uchar>((green + pixels / 2) / pixels);
        into[i + 2] = static_cast<uchar>((blue + pixels / 2) / pixels);
    }
}

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
    Sums sums(std::size_t{3} * static_cast<std::size_t>(width));
    for (int y = 0; y < means.height(); ++y) {
        std::ranges::fill(sums, quint16{0});
        for (int line = y * side; line < (y + 1) * side; ++line) {
            addRow(picture.constScanLine(std::min(line, height - 1)), sums);
        }
        meanRow(sums,
                width,
                side,
                {means.scanLine(y), std::size_t{3} * static_cast<std::size_t>(means.width())});
    }
    return means;
}
