#include "ColorSamples.h"

#include "RenditionNumbers.h"

#include <QPointF>
#include <QRectF>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace
{

/// Places a side of the grid.
constexpr int kGrid = 40;

/// From this part of white on a channel counts as clipped, and below this as not.
constexpr float kClipped = 0.98F;
constexpr float kSafe = 0.9F;

/// How far off the picture may show a place, as a part of its longer side: cameras mend what their
/// lenses bend.
constexpr double kShift = 0.015;

/// The change of lightness between neighbours that halves a place's weight, in L*.
constexpr float kEdge = 12.0F;

using Light = std::array<float, 3>;

/// Light at a place (0..1 of the sides), between the pixels' middles.
Light lightAt(const Bitmap& bitmap, QPointF place)
{
    const auto pixel = [](double part, int side) {
        return std::clamp(part * side - 0.5, 0.0, side - 1.0);
    };
    const double x = pixel(place.x(), bitmap.pixelsWide());
    const double y = pixel(place.y(), bitmap.pixelsHigh());
    const auto left = static_cast<std::size_t>(x);
    const auto right = std::min(left + 1, static_cast<std::size_t>(bitmap.pixelsWide()) - 1);
    const int top = static_cast<int>(y);
    const auto upper = bitmap.row(top);
    const auto lower = bitmap.row(std::min(top + 1, bitmap.pixelsHigh() - 1));
    Light light{};
    for (std::size_t channel = 0; channel < light.size(); ++channel) {
        const auto across = [&](std::span<const quint16> row) {
            return std::lerp(static_cast<double>(row[3 * left + channel]),
                             static_cast<double>(row[3 * right + channel]),
                             x - static_cast<double>(left));
        };
        light.at(channel) =
            static_cast<float>(std::lerp(across(upper), across(lower), y - top) / 65535.0);
    }
    return light;
}

/// Where a place of the turned picture lies in the picture itself.
QPointF unturned(QPointF place, int turns)
{
    for (int quarter = 0; quarter < turns; ++quarter) {
        place = {place.y(), 1.0 - place.x()};
    }
    return place;
}

QPointF placeIn(const QRectF& area, double x, double y)
{
    return {area.left() + x * area.width(), area.top() + y * area.height()};
}

/// The least and the most of a place's channels, as parts of white.
std::ranges::minmax_result<float> channelsOf(Light light, const ColorClipping& clipping)
{
    std::ranges::transform(light, clipping.balance, light.begin(), [&](float value, double gain) {
        return value * static_cast<float>(gain / clipping.white);
    });
    return std::ranges::minmax(light);
}

/// The change of lightness from pixel to pixel about a place.
float edgeAt(const Bitmap& shown, QPointF place)
{
    const QPointF across(1.0 / shown.pixelsWide(), 0.0);
    const QPointF down(0.0, 1.0 / shown.pixelsHigh());
    const auto lightness = [&](QPointF at) { return CieLab::of(lightAt(shown, at)).lightness; };
    return std::max(std::abs(lightness(place + across) - lightness(place - across)),
                    std::abs(lightness(place + down) - lightness(place - down))) /
           2.0F;
}

/// L* of the lightest pixel about a place: nothing is lighter than what clips, however far off the
/// picture shows that.
float lightestNear(const Bitmap& shown, QPointF place)
{
    const int wide = shown.pixelsWide();
    const int high = shown.pixelsHigh();
    const int shift = static_cast<int>(std::ceil(kShift * std::max(wide, high)));
    const int left = static_cast<int>(place.x() * wide);
    const int top = static_cast<int>(place.y() * high);
    double most = 0.0;
    for (int y = std::max(0, top - shift); y <= std::min(high - 1, top + shift); ++y) {
        const auto row = shown.row(y);
        for (int x = std::max(0, left - shift); x <= std::min(wide - 1, left + shift); ++x) {
            most = std::max(most,
                            std::inner_product(RenditionNumbers::kLuminance.begin(),
                                               RenditionNumbers::kLuminance.end(),
                                               row.begin() + 3 * static_cast<std::ptrdiff_t>(x),
                                               0.0));
        }
    }
    const auto grey = static_cast<float>(most / 65535.0);
    return CieLab::of(std::array{grey, grey, grey}).lightness;
}

} // namespace

ColorSamples ColorSamples::of(const Bitmap& photo,
                              const Bitmap& shown,
                              const SceneComparison::Overlay& overlay,
                              const ColorClipping& clipping)
{
    ColorSamples found;
    found.samples.reserve(std::size_t{kGrid} * kGrid);
    float fullLight = 0.0F;
    int full = 0;
    for (int row = 0; row < kGrid; ++row) {
        for (int column = 0; column < kGrid; ++column) {
            const double x = (column + 0.5) / kGrid;
            const double y = (row + 0.5) / kGrid;
            const Light light = lightAt(photo, placeIn(overlay.first, x, y));
            const auto [least, most] = channelsOf(light, clipping);
            if (most >= kClipped && least < kSafe) { // clipped in part
                continue;
            }
            const QPointF place = unturned(placeIn(overlay.second, x, y), overlay.turns);
            const float edge = edgeAt(shown, place) / kEdge;
            found.samples.push_back({.light = light,
                                     .shown = CieLab::of(lightAt(shown, place)),
                                     .weight = 1.0F / (1.0F + edge * edge)});
            if (least >= kClipped) {
                fullLight += lightestNear(shown, place);
                ++full;
            }
        }
    }
    if (full > 0) {
        found.fullLight = fullLight / static_cast<float>(full);
    }
    return found;
}
