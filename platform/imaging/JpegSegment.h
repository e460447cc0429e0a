#pragma once

#include <QByteArray>

/// One marker segment of a JPEG file (ITU-T T.81, B.1.1.4) as it stands before the picture.
struct JpegSegment {
    int marker{0};      ///< marker code without the leading 0xFF: 0xE1 for APP1, 0xED for APP13
    QByteArray payload; ///< what follows the length field, at most 65533 bytes
};
