#include "RawFile.h"

#include <algorithm>
#include <bit>
#include <span>

// What a sensor measured, as it was unpacked.

namespace
{

/// The most that a sensor's values can be: they are of 16 bits.
constexpr unsigned kHighestValue = 65535;

/// The least that a value is without light: a common level, one of each channel, and one of each
/// place in a pattern. Levels are of 32 bits, whatever the values have.
int leastBlack(const libraw_colordata_t& color)
{
    constexpr std::size_t kChannels = 4;
    constexpr std::size_t kPattern = 6; // rows and columns of it stand before
    const std::span levels(color.cblack);
    const quint64 places = quint64{levels[kChannels]} * levels[kChannels + 1];
    quint64 black = quint64{color.black} + std::ranges::min(levels.first(kChannels));
    if (places > 0 && places <= levels.size() - kPattern) {
        black += std::ranges::min(levels.subspan(kPattern, places));
    }
    return static_cast<int>(std::min<quint64>(black, kHighestValue));
}

/// The rows after which LibRaw's filters are the same again: of those that it has no code for, it
/// numbers Fujifilm's 6 x 6 and Leaf's 16 x 16. A code has 4 bits for each of 8 rows.
int periodOf(unsigned filters)
{
    constexpr unsigned kOfLeaf = 1;
    constexpr unsigned kOfFujifilm = 9;
    if (filters == kOfLeaf || filters == kOfFujifilm) {
        return filters == kOfLeaf ? 16 : 6;
    }
    int rows = 1;
    while (std::rotr(filters, 4 * rows) != filters) {
        ++rows;
    }
    return rows;
}

} // namespace

/// LibRaw takes where the visible area lies from the file and bounds its own reads, not ours.
bool RawFile::isVisibleAreaHeld(int valuesOfPixel) const
{
    const auto& sizes = imgdata.sizes;
    return sizes.top_margin + sizes.height <= sizes.raw_height &&
           (sizes.left_margin + sizes.width) * static_cast<std::size_t>(valuesOfPixel) *
                   sizeof(quint16) <=
               sizes.raw_pitch;
}

std::optional<SensorValues> RawFile::sensorValues() const
{
    const auto& data = imgdata.rawdata;
    const auto& sizes = imgdata.sizes;
    const auto& color = imgdata.color;
    SensorValues values{.first = data.raw_image};
    if (data.color3_image != nullptr) {
        values = {.first = &data.color3_image[0][0], .channels = 3};
    } else if (data.color4_image != nullptr) {
        values = {.first = &data.color4_image[0][0], .channels = 4};
    }
    if (values.first == nullptr || !isVisibleAreaHeld(values.channels)) {
        return std::nullopt;
    }
    // A picture that will be stretched keeps all, as keptArea() tells then.
    const QRect all(0, 0, sizes.width, sizes.height);
    const QRect area = sizes.pixel_aspect == 1.0 ? keptArea(all.size()) : all;
    values.stride = static_cast<qsizetype>(sizes.raw_pitch / sizeof(quint16));
    values.first += (sizes.top_margin + area.top()) * values.stride +
                    qsizetype{sizes.left_margin + area.left()} * values.channels;
    values.period = periodOf(imgdata.idata.filters);
    values.size = area.size();
    // LibRaw's visible area of a Panasonic LX3 begins with 5 masked rows, and it knows most cameras
    // from single files; what a file states to be its picture holds none.
    values.mayHaveRim = area != statedCrop();
    values.black = leastBlack(color);
    values.white = static_cast<int>(std::min(color.maximum, kHighestValue));
    return values;
}
