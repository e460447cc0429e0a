#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <exiv2/xmp_exiv2.hpp>

/// XMP as the packets that a JPEG file carries it in. To be called from within
/// MetadataAdapter::attempt() only.
namespace XmpPackets
{

/// Of each file at most so many properties are written, and none that has more fields in a
/// structure; the time for more is not worth them. A tenth of a second, measured; the square of the
/// number counts, and that of all structures together is bounded alike.
inline constexpr std::size_t kMostProperties = 4000;

/// Bytes of each packet, at most.
struct Limits {
    qsizetype main{0};
    qsizetype extended{0};
};

/// Without padding; empty where they say nothing.
struct Packets {
    QByteArray main;     ///< notes the second packet, where there is one (see ExtendedXmp)
    QByteArray extended; ///< what the main packet has no room for
};

/// Everything in the main packet where there is room for it; else the largest properties stand in
/// the second one, each with all its parts. What Exiv2 cannot write is left out, as are the largest
/// of what is too much for both and those beyond kMostProperties; the system log says what, under
/// `name`, the file's.
[[nodiscard]] Packets encode(Exiv2::XmpData xmp, const QString& name, const Limits& limits);

} // namespace XmpPackets
