#pragma once

#include "ImageProperties.h"
#include "JpegSegment.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <exiv2/xmp_exiv2.hpp>

/// XMP of JPEG files that is more than a segment holds (ISO 16684-3, 1.1.3.1): a main packet with
/// a note, and the rest in pieces. To be called from within MetadataAdapter::attempt() only.
namespace ExtendedXmp
{

/// Whether the main packet notes that there is more.
[[nodiscard]] bool isNoted(const ImageProperties::Content& content);

/// Adds what the pieces in `jpeg` say to the properties, which it does not replace; where the
/// pieces are not whole, are no XMP or too much of it (XmpEffort), the content remembers that they
/// are lost.
void merge(QByteArrayView jpeg, ImageProperties::Content& content);

/// Notes in the main packet's properties that there is this second packet. The note of any packet
/// is as long.
void note(Exiv2::XmpData& main, QByteArrayView packet);

/// The second packet in pieces, in order; none of an empty one.
[[nodiscard]] QList<JpegSegment> segments(const QByteArray& packet);

} // namespace ExtendedXmp
