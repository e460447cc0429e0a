#pragma once

#include <QByteArrayView>
#include <QList>

/// The marker segments of a JPEG file (ITU-T T.81, B.1.1.4). Any thread.
namespace JpegSegments
{

/// The payloads of the segments before the picture that have this marker (without the leading
/// 0xFF) and begin so, as far as the file is whole. Views of `jpeg`.
[[nodiscard]] QList<QByteArrayView>
payloads(QByteArrayView jpeg, quint8 marker, QByteArrayView signature);

} // namespace JpegSegments
