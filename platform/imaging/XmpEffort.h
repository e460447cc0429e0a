#pragma once

#include <QByteArray>
#include <QByteArrayView>

/// What it costs to read XMP: the toolkit takes for a packet as long as it has text, elements and
/// attributes, and for the fields of a structure as long as the square of their number. Any thread.
namespace XmpEffort
{

/// Bytes of a packet, at most: more than any program writes; depth maps and second pictures are a
/// few megabytes.
inline constexpr qsizetype kLargestPacket = qsizetype{16} * 1024 * 1024;

/// Whether the toolkit reads the packet, or refuses it, in about a second at most: that is what
/// 16 MB of text, 50,000 elements and attributes, and 25 million comparisons of fields take
/// together (a fifth, a third, and a third of a second, measured with Exiv2 0.27). No packet with
/// a document type, which may be made of itself many times over, is bearable, and no large one of
/// other than single bytes.
[[nodiscard]] bool isBearable(QByteArrayView packet);

/// A copy of the file whose XMP is nothing, where it is not bearable, or is more than the one
/// packet that a directory may have; empty where it may be read. Looks into TIFF files, and the RAW
/// files built like them.
[[nodiscard]] QByteArray withoutUnbearable(QByteArrayView file);

} // namespace XmpEffort
