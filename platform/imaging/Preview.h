#pragma once

#include <QImage>

/// A picture of a photo that is stored beside its data.
struct Preview {
    QImage image;     ///< sRGB encoded; a large one is averaged down
    qint64 pixels{0}; ///< that it has where it is stored
};
