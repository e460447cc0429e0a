#pragma once

#include "ImageProperties.h"
#include "JpegSegment.h"

#include <QByteArray>
#include <QList>
#include <QSize>

/// Metadata as the marker segments of a JPEG file. Any thread, several at once.
namespace MetadataSegments
{

/// The segments that carry `properties` in a JPEG of `pixels`, in the order they are written: Exif
/// (APP1), IPTC (APP13), XMP (APP1); each only where there is something to carry, IPTC and XMP in
/// as many segments as they need. Of Exif the tags that MetadataTags names and the maker note are
/// carried, of Photoshop's image resources IPTC alone. Tags that do not hold for the JPEG are left
/// out or made true; `thumbnailJpeg` (may be empty) takes the place of any old thumbnail. Exif that
/// a segment cannot hold is trimmed from its least useful end, what cannot be written is left out,
/// and the system log names the file and says so, as it does where the file's metadata were
/// damaged. Throws std::bad_alloc; never fails otherwise.
[[nodiscard]] QList<JpegSegment>
build(const ImageProperties& properties, QSize pixels, const QByteArray& thumbnailJpeg);

} // namespace MetadataSegments
