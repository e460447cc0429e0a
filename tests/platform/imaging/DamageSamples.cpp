#include "DamageSamples.h"

#include "SceneSamples.h"

#include <algorithm>
#include <random>

void DamageSamples::fill(Bitmap& bitmap, const QRect& area, quint16 value)
{
    for (int y = area.top(); y <= area.bottom(); ++y) {
        std::ranges::fill(bitmap.row(y).subspan(3 * static_cast<std::size_t>(area.left()),
                                                3 * static_cast<std::size_t>(area.width())),
                          value);
    }
}

void DamageSamples::fillWithNoise(Bitmap& bitmap, const QRect& area)
{
    std::mt19937 random(5);
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (quint16& value : bitmap.row(y).subspan(3 * static_cast<std::size_t>(area.left()),
                                                    3 * static_cast<std::size_t>(area.width()))) {
            value = static_cast<quint16>(random() & 0xFFFFU);
        }
    }
}

Bitmap DamageSamples::shifted(Bitmap picture, int from)
{
    for (int y = from; y < picture.pixelsHigh(); ++y) {
        const auto row = picture.row(y);
        std::rotate(row.begin(), row.end() - std::ptrdiff_t{3} * 300, row.end());
    }
    return picture;
}

Bitmap DamageSamples::redLeavesBelow()
{
    Bitmap picture = SceneSamples::leaves(kLandscape);
    for (int y = 480; y < picture.pixelsHigh(); ++y) {
        const auto row = picture.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            row[i] = static_cast<quint16>(65535 - row[i + 1]);
        }
    }
    return picture;
}

Bitmap DamageSamples::throughRedFilter(Bitmap picture, double tint)
{
    for (int y = 0; y < picture.pixelsHigh(); ++y) {
        const auto row = picture.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            row[i + 1] = row[i];
            row[i + 2] = static_cast<quint16>(row[i] * (1.0 - tint));
        }
    }
    return picture;
}
