#pragma once

#include "Bitmap.h"

#include <QRect>

/// Pictures as changes, filters and losses of data leave them.
namespace DamageSamples
{

inline constexpr QSize kLandscape(1200, 800);

/// Gives an area one value in all channels.
void fill(Bitmap& bitmap, const QRect& area, quint16 value);

/// Gives an area values by chance.
void fillWithNoise(Bitmap& bitmap, const QRect& area);

/// The rows from `from` on moved to the right, as data are of which some were lost.
[[nodiscard]] Bitmap shifted(Bitmap picture, int from);

/// Leaves, red ones in the lower part where they are least green.
[[nodiscard]] Bitmap redLeavesBelow();

/// In black and white through a red filter, or in a tint that takes so much of blue.
[[nodiscard]] Bitmap throughRedFilter(Bitmap picture, double tint = 0.0);

} // namespace DamageSamples
