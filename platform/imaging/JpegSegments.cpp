#include "JpegSegments.h"

#include <QtEndian>

QList<QByteArrayView>
JpegSegments::payloads(QByteArrayView jpeg, quint8 marker, QByteArrayView signature)
{
    constexpr quint8 kStartOfScan = 0xDA;
    QList<QByteArrayView> found;
    qsizetype offset = 2;
    while (offset + 4 <= jpeg.size() && static_cast<quint8>(jpeg[offset]) == 0xFF) {
        const auto current = static_cast<quint8>(jpeg[offset + 1]);
        const qsizetype length = qFromBigEndian<quint16>(jpeg.data() + offset + 2);
        if (current == kStartOfScan || length < 2 || length > jpeg.size() - offset - 2) {
            break;
        }
        const QByteArrayView payload = jpeg.sliced(offset + 4, length - 2);
        if (current == marker && payload.startsWith(signature)) {
            found.append(payload);
        }
        offset += 2 + length;
    }
    return found;
}
