#include "SceneSamples.h"

#include "BitmapImage.h"

#include <algorithm>
#include <array>
#include <random>

namespace
{

struct Leaf {
    int x{0};
    int y{0};
    int radius{0};
    std::array<quint16, 3> colour{};
};

void draw(Bitmap& bitmap, const Leaf& leaf)
{
    const int top = std::max(0, leaf.y - leaf.radius);
    const int bottom = std::min(bitmap.pixelsHigh() - 1, leaf.y + leaf.radius);
    const int left = std::max(0, leaf.x - leaf.radius);
    const int right = std::min(bitmap.pixelsWide() - 1, leaf.x + leaf.radius);
    for (int y = top; y <= bottom; ++y) {
        const auto row = bitmap.row(y);
        for (int x = left; x <= right; ++x) {
            const int across = x - leaf.x;
            const int down = y - leaf.y;
            if (across * across + down * down <= leaf.radius * leaf.radius) {
                std::ranges::copy(leaf.colour, &row[3 * static_cast<std::size_t>(x)]);
            }
        }
    }
}

} // namespace

Bitmap SceneSamples::leaves(QSize size, quint32 seed)
{
    constexpr quint32 kLeaves = 400;
    Bitmap bitmap(size.width(), size.height(), Transfer::Srgb);
    std::mt19937 random(seed);
    const auto upTo = [&random](int end) {
        return static_cast<int>(random() % static_cast<quint32>(end));
    };
    const int largest = std::max(4, size.height() / 3);
    for (quint32 drawn = 0; drawn < kLeaves; ++drawn) {
        Leaf leaf{.x = upTo(size.width()), .y = upTo(size.height())};
        // Many small ones, few large ones, the large ones beneath.
        leaf.radius = std::max(1, largest / (1 + static_cast<int>(drawn) / 20));
        // Light above, dark below.
        const int light = upTo(80) + (leaf.y < size.height() / 2 ? 120 : 0);
        for (quint16& part : leaf.colour) {
            part = static_cast<quint16>((light + upTo(56)) * 257);
        }
        draw(bitmap, leaf);
    }
    return bitmap;
}

QImage SceneSamples::thumbnailOf(const Bitmap& bitmap, int side, Qt::TransformationMode mode)
{
    return BitmapImage::toImage(bitmap).scaled(side, side, Qt::KeepAspectRatio, mode);
}
