#pragma once

#include <QByteArray>
#include <QImage>

/// A finished JPEG in memory and the picture that it was made of. All of it was decoded again and
/// compared with that (JpegProof), so whoever meets these very bytes need not decode them.
struct ProvedJpeg {
    QByteArray bytes;
    QImage picture; ///< sRGB encoded, Format_RGB888, its rows as they lie in the file
};
