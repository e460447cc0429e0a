#pragma once

#include "SensorValues.h"

#include <optional>

/// Tells where the rows of sensor data break off: where damaged data begin or end, all values of a
/// row are other ones than in the row before at once. A scene does that hardly ever, since no edge
/// in it lies along a row of pixels to the pixel, and lenses soften it. Any thread.
namespace SensorBreaks
{

/// Where the longest break is, from the top, 0..1 of the height; nothing where none goes through
/// half of a row. Not told within the outermost rows, where some sensors' masked cells lie.
/// Measured over photos of ten cameras: at most a quarter of a row breaks; at the edges of data
/// that were overwritten, or decoded out of step, half and more.
[[nodiscard]] std::optional<double> longest(const SensorValues& values);

} // namespace SensorBreaks
