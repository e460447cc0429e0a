#include "ReducedPicture.h"

#include "SrgbTransfer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace
{

/// Averages blocks; `addRow` adds a source row's light to the sums, `block` pixels to each three of
/// them, from a pixel on.
template <typename AddRow>
Bitmap averaged(QSize size, int longestSide, const AddRow& addRow)
{
    const int block = ReducedPicture::blockSide(size, longestSide);
    const QSize into(size.width() / block, size.height() / block);
    const int left = size.width() % block / 2;
    const int top = size.height() % block / 2;
    Bitmap result(into.width(), into.height(), Transfer::Linear);
    std::vector<quint64> sums(static_cast<std::size_t>(into.width()) * 3);
    const auto pixels = static_cast<quint64>(block) * static_cast<quint64>(block);
    for (int y = 0; y < into.height(); ++y) {
        std::ranges::fill(sums, 0);
        for (int line = 0; line < block; ++line) {
            addRow(top + y * block + line, left, block, std::span(sums));
        }
        std::ranges::transform(sums, result.row(y).begin(), [pixels](quint64 sum) {
            return static_cast<quint16>((sum + pixels / 2) / pixels);
        });
    }
    return result;
}

template <typename Value, typename Light>
void addBlocks(const Value* value, int block, std::span<quint64> sums, const Light& light)
{
    for (std::size_t i = 0; i < sums.size(); i += 3) {
        quint32 red = 0; // a side is too short for more
        quint32 green = 0;
        quint32 blue = 0;
        for (int pixel = 0; pixel < block; ++pixel, value += 3) {
            red += light(value[0]);
            green += light(value[1]);
            blue += light(value[2]);
        }
        sums[i] += red;
        sums[i + 1] += green;
        sums[i + 2] += blue;
    }
}

std::array<quint16, 256> lightOfBytes()
{
    std::array<quint16, 256> light{};
    for (std::size_t byte = 0; byte < light.size(); ++byte) {
        light.at(byte) = SrgbTransfer::tables().linear(widened(static_cast<quint8>(byte)));
    }
    return light;
}

} // namespace

int ReducedPicture::blockSide(QSize size, int longestSide)
{
    return std::max(
        1,
        std::min(
            {std::max(size.width(), size.height()) / longestSide, size.width(), size.height()}));
}

Bitmap ReducedPicture::of(const Bitmap& bitmap, int longestSide)
{
    if (bitmap.isNull()) {
        return {};
    }
    const SrgbTransfer& tables = SrgbTransfer::tables();
    const bool isLinear = bitmap.transfer() == Transfer::Linear;
    return averaged(
        bitmap.size(), longestSide, [&](int y, int left, int block, std::span<quint64> sums) {
            const quint16* const first = bitmap.row(y).data() + std::ptrdiff_t{3} * left;
            if (isLinear) {
                addBlocks(first, block, sums, [](quint16 value) { return value; });
            } else {
                addBlocks(first, block, sums, [&](quint16 value) { return tables.linear(value); });
            }
        });
}

Bitmap ReducedPicture::of(const QImage& image, int longestSide)
{
    if (image.isNull()) {
        return {};
    }
    static const std::array<quint16, 256> kLight = lightOfBytes();
    const QImage bytes = image.convertToFormat(QImage::Format_RGB888);
    return averaged(
        bytes.size(), longestSide, [&](int y, int left, int block, std::span<quint64> sums) {
            const uchar* const first = bytes.constScanLine(y) + std::ptrdiff_t{3} * left;
            addBlocks(first, block, sums, [](uchar value) { return kLight[value]; });
        });
}
