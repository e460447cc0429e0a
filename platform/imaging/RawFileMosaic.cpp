#include "BayerKernels.h"
#include "RawFile.h"

#include <algorithm>
#include <array>

// Where a sensor's data lie in plain cells, and how they become light.

namespace
{

/// From the codes of LibRaw's filters to the colours that they stand for.
std::optional<BayerMosaic::Color> colorOf(char letter)
{
    switch (letter) {
    case 'R':
        return BayerMosaic::Red;
    case 'G':
        return BayerMosaic::Green;
    case 'B':
        return BayerMosaic::Blue;
    default:
        return std::nullopt;
    }
}

/// The value from which on green counts as clipped: the sensor's limit, or, where many values
/// gather at a lower one, that; else clipped places would have the colour of the other channels.
float whiteOf(const BayerMosaic& mosaic, float limit)
{
    constexpr float kLowest = 0.6F;
    constexpr float kSpread = 0.99F;
    constexpr qint64 kFewest = 64;
    constexpr qint64 kPart = 20000;
    const int start = mosaic.colors[0] == BayerMosaic::Green ? 0 : 1;
    quint16 highest = 0;
    const auto eachRow = [&](const auto& work) {
        for (int y = 0; y < mosaic.visible.height(); ++y) {
            const quint16* const row = mosaic.values + y * mosaic.stride;
            const int first = (start + y) % 2;
            work(row + first, (mosaic.visible.width() - first + 1) / 2);
        }
    };
    eachRow([&](const quint16* greens, int number) {
        highest = std::max(highest, BayerKernels::highest(greens, number));
    });
    const auto gathered = static_cast<quint16>(static_cast<float>(highest) * kSpread);
    qint64 count = 0;
    eachRow([&](const quint16* greens, int number) {
        count += BayerKernels::countFrom(gathered, greens, number);
    });
    const qint64 pixels = qint64{mosaic.visible.width()} * mosaic.visible.height();
    const bool isGathered = count >= std::max(kFewest, pixels / kPart);
    const auto white = static_cast<float>(gathered);
    return isGathered && white < limit && white > limit * kLowest ? white : limit;
}

} // namespace

std::optional<BayerMosaic> RawFile::mosaic()
{
    const auto& data = imgdata.rawdata;
    const auto& sizes = imgdata.sizes;
    const auto& names = imgdata.idata;
    constexpr unsigned kEachRow = 0x01010101U;
    const unsigned pattern = names.filters;
    const bool isPlain = data.raw_image != nullptr && pattern > 1000 &&
                         pattern == (pattern & 0xFFU) * kEachRow && names.colors == 3 &&
                         names.is_foveon == 0 && sizes.pixel_aspect == 1.0 &&
                         libraw_internal_data.internal_output_params.fuji_width == 0 &&
                         is_phaseone_compressed() == 0 && imgdata.color.phase_one_data.format == 0;
    const auto gains = multipliers();
    if (!isPlain || !isVisibleAreaHeld(1) || !gains) {
        return std::nullopt;
    }
    adjust_bl();
    const auto& color = imgdata.color;
    if (color.cblack[4] != 0 || color.cblack[5] != 0) {
        return std::nullopt; // black that differs from place to place
    }
    BayerMosaic mosaic;
    mosaic.stride = sizes.raw_pitch / 2;
    mosaic.values = data.raw_image + sizes.top_margin * mosaic.stride + sizes.left_margin;
    mosaic.visible = QSize(sizes.width, sizes.height);
    mosaic.kept = keptArea(mosaic.visible);
    Filters filters{};
    for (int place = 0; place < 4; ++place) {
        const auto filter = static_cast<std::size_t>(FC(place / 2, place % 2));
        const auto colorAt = colorOf(names.cdesc[filter]);
        if (!colorAt) {
            return std::nullopt;
        }
        filters.at(static_cast<std::size_t>(place)) = filter;
        mosaic.colors.at(static_cast<std::size_t>(place)) = *colorAt;
    }
    if (!mosaic.isValid() || !setLight(mosaic, filters, *gains)) {
        return std::nullopt;
    }
    recycle_datastream();
    return mosaic;
}

/// What the values of each filter are as light; false where there is none between black and white.
bool RawFile::setLight(BayerMosaic& mosaic,
                       const Filters& filters,
                       const std::array<float, 4>& gains) const
{
    const auto& color = imgdata.color;
    const auto limit = static_cast<float>(color.maximum);
    const float white = whiteOf(mosaic, limit);
    const float least = std::min({gains[0], gains[1], gains[2]});
    for (std::size_t place = 0; place < 4; ++place) {
        const auto black = static_cast<float>(color.cblack[filters.at(place)]);
        if (black >= white) {
            return false;
        }
        // The two greens may have gains of their own.
        const std::size_t channel = mosaic.colors.at(place);
        const float own = gains.at(filters.at(place)) / gains.at(channel);
        mosaic.black.at(place) = black;
        mosaic.scale.at(place) = own * 65535.0F / (limit - black);
        mosaic.balance.at(channel) = gains.at(channel) / least;
        if (channel == BayerMosaic::Green) {
            mosaic.white = std::min(mosaic.white, (white - black) * mosaic.scale.at(place));
        }
    }
    return true;
}

/// Gains of the filters' colours, all positive; nothing where LibRaw would derive them from the
/// picture in another way.
std::optional<std::array<float, 4>> RawFile::multipliers() const
{
    const auto& color = imgdata.color;
    const bool hasWhitePatch = color.white[0][0] != 0;
    if (hasWhitePatch || color.as_shot_wb_applied != 0) {
        return std::nullopt;
    }
    const bool isKnown = color.cam_mul[0] > 0.0F && color.cam_mul[2] > 0.0F;
    const auto& from = isKnown ? color.cam_mul : color.pre_mul;
    std::array<float, 4> gains{from[0], from[1] > 0.0F ? from[1] : 1.0F, from[2], from[3]};
    if (!(gains[3] > 0.0F)) {
        gains[3] = gains[1];
    }
    const bool allPositive = std::ranges::all_of(gains, [](float gain) { return gain > 0.0F; });
    return allPositive ? std::optional(gains) : std::nullopt;
}
