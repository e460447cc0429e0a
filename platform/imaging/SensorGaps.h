#pragma once

#include <QSize>

/// Values as they were unpacked from a RAW file, before black is taken off. A view.
struct SensorValues {
    const quint16* first{nullptr};
    qsizetype stride{0}; ///< values from row to row
    int channels{1};     ///< values of a pixel: more than one where colours are complete
    QSize size{};        ///< in pixels
    int black{0};        ///< what a value is without light
    int white{65535};    ///< the most that a value can be
};

/// Tells sensor data that are gone, whatever the picture shows. Any thread.
namespace SensorGaps
{

/// Whether a sixteenth of the pixels or more are one and the same. What a sensor measures has noise
/// wherever it is not clipped: at white, where a picture may well be the same all over, and at
/// black, where only whole rows without any noise tell, as in colours that are complete, which may
/// have been smoothed.
[[nodiscard]] bool isFoundIn(const SensorValues& values);

} // namespace SensorGaps
