#pragma once

#include "SensorValues.h"

/// Tells sensor data that are gone, whatever the picture shows. Any thread.
namespace SensorGaps
{

/// Whether a sixteenth of the pixels or more are one and the same. What a sensor measures has noise
/// wherever it is not clipped: at white, where a picture may well be the same all over, and at
/// black, where only whole rows without any noise tell, as in colours that are complete, which may
/// have been smoothed.
[[nodiscard]] bool isFoundIn(const SensorValues& values);

} // namespace SensorGaps
