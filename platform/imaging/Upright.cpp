#include "Upright.h"

#include <QTransform>

namespace
{

/// Whether the picture is to be mirrored from left to right once it was turned.
bool isMirrored(int orientation)
{
    return orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
}

} // namespace

bool Upright::isTransposed(int orientation)
{
    return orientation >= 5 && orientation <= 8;
}

int Upright::rotation(int orientation)
{
    switch (orientation) {
    case 3:
    case 4:
        return 180;
    case 5:
    case 6:
        return 90;
    case 7:
    case 8:
        return 270;
    default:
        return 0;
    }
}

QImage Upright::turned(const QImage& picture, int orientation)
{
    const QImage upright = picture.transformed(QTransform().rotate(rotation(orientation)));
    return isMirrored(orientation) ? upright.mirrored(true, false) : upright;
}

QImage Upright::stored(const QImage& upright, int orientation)
{
    const QImage turned = isMirrored(orientation) ? upright.mirrored(true, false) : upright;
    return turned.transformed(QTransform().rotate(-rotation(orientation)));
}
