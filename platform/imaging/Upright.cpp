#include "Upright.h"

#include <QPoint>

#include <algorithm>
#include <span>

namespace
{

constexpr int kChannels = 3;

/// Where the pixel shown at (x, y) is stored, for a stored picture of the given sides.
QPoint storedAt(int x, int y, int orientation, QSize stored)
{
    const int right = stored.width() - 1;
    const int bottom = stored.height() - 1;
    switch (orientation) {
    case 2:
        return {right - x, y};
    case 3:
        return {right - x, bottom - y};
    case 4:
        return {x, bottom - y};
    case 5:
        return {y, x};
    case 6:
        return {y, bottom - x};
    case 7:
        return {right - y, bottom - x};
    case 8:
        return {right - y, x};
    default:
        return {x, y};
    }
}

} // namespace

bool Upright::isTransposed(int orientation)
{
    return orientation >= 5 && orientation <= 8;
}

int Upright::rotation(int orientation)
{
    switch (orientation) {
    case 3:
    case 4:
        return 180;
    case 5:
    case 6:
        return 90;
    case 7:
    case 8:
        return 270;
    default:
        return 0;
    }
}

Bitmap Upright::turned(const Bitmap& bitmap, int orientation)
{
    const QSize stored = bitmap.size();
    const QSize shown = isTransposed(orientation) ? stored.transposed() : stored;
    Bitmap result(shown.width(), shown.height(), bitmap.transfer());
    for (int y = 0; y < shown.height(); ++y) {
        const std::span<quint16> target = result.row(y);
        for (int x = 0; x < shown.width(); ++x) {
            const QPoint from = storedAt(x, y, orientation, stored);
            const std::span<const quint16> source = bitmap.row(from.y());
            std::copy_n(source.begin() + qsizetype{from.x()} * kChannels,
                        kChannels,
                        target.begin() + qsizetype{x} * kChannels);
        }
    }
    return result;
}
