#pragma once

#include <QByteArray>

/// One marker segment of a JPEG file (ITU-T T.81, B.1.1.4) as it stands before the picture.
struct JpegSegment {
    /// Marker codes of metadata, without the leading 0xFF.
    static constexpr quint8 kApp1 = 0xE1;
    static constexpr quint8 kApp13 = 0xED;

    /// The length field has 16 bits and counts itself.
    static constexpr qsizetype kLargestPayload = 65533;

    int marker{0};      ///< marker code without the leading 0xFF
    QByteArray payload; ///< what follows the length field, kLargestPayload bytes at most
};
