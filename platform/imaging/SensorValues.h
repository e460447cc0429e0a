#pragma once

#include <QSize>
#include <QtGlobal>

/// Values as they were unpacked from a RAW file, before black is taken off. A view.
struct SensorValues {
    const quint16* first{nullptr};
    qsizetype stride{0};   ///< values from row to row
    int channels{1};       ///< values of a pixel: more than one where colours are complete
    int period{1};         ///< rows after which the same filters come again
    QSize size{};          ///< in pixels
    bool mayHaveRim{true}; ///< whether cells that see no light may lie in the outermost rows
    int black{0};          ///< what a value is without light
    int white{65535};      ///< the most that a value can be
};
