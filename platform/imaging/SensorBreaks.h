#pragma once

#include "SensorValues.h"

#include <vector>

/// Tells where the rows of sensor data break off: where damaged data begin or end, all values of a
/// row are other ones than in the row before at once. A scene does that hardly ever, since no edge
/// in it lies along a row of pixels to the pixel, and lenses soften it. Any thread.
namespace SensorBreaks
{

/// Where a break goes through half of a row or more, 0..1 of the height, from the top down; of
/// those within a few rows the longest. Not told within the outermost rows of values that may have
/// a rim. Measured over photos of ten cameras: at most a quarter of a row breaks, or a third where
/// their colours are taken in X-Trans's pattern; at the edges of data that were overwritten, or
/// decoded out of step, half and more.
[[nodiscard]] std::vector<double> places(const SensorValues& values);

} // namespace SensorBreaks
