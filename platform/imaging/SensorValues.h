#pragma once

#include <QSize>
#include <QtGlobal>

/// Values as they were unpacked from a RAW file, before black is taken off. A view.
struct SensorValues {
    const quint16* first{nullptr};
    qsizetype stride{0}; ///< values from row to row
    int channels{1};     ///< values of a pixel: more than one where colours are complete
    QSize size{};        ///< in pixels
    int black{0};        ///< what a value is without light
    int white{65535};    ///< the most that a value can be
};
