#pragma once

#include "ImageProperties.h"
#include "JpegSegment.h"

#include <QByteArray>
#include <QList>
#include <QSize>

#include <exiv2/exif.hpp>
#include <exiv2/iptc.hpp>
#include <exiv2/xmp_exiv2.hpp>
#include <map>
#include <string>

/// Pictures with metadata of the tests' own making, and what stands in those that were made.
namespace MetadataSamples
{

struct Blocks {
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
};

/// A small JPEG with these blocks.
[[nodiscard]] QByteArray jpegWith(const Blocks& blocks);
/// The blocks as a file of any type would have yielded them, whatever a JPEG may hold.
[[nodiscard]] ImageProperties holding(const Blocks& blocks);
/// More than 200,000 bytes of XMP: many texts of all sizes ("Xmp.photoshop.Property0" and on), a
/// history in structures, names in an array, a title in two languages.
[[nodiscard]] Exiv2::XmpData largeXmp();
/// A small JPEG with this Exif block (a TIFF structure), byte for byte.
[[nodiscard]] QByteArray jpegWithExifBytes(const QByteArray& exif);
/// A small JPEG with these segments.
[[nodiscard]] QByteArray jpegWithSegments(const QList<JpegSegment>& segments);

/// Reads `bytes`; a failure is a test failure and yields an empty object.
[[nodiscard]] ImageProperties readBack(const QByteArray& bytes);
/// The properties as a JPEG of that size carries them.
[[nodiscard]] ImageProperties
asCarried(const ImageProperties& properties, QSize pixels, const QByteArray& thumbnail = {});

[[nodiscard]] bool hasExif(const ImageProperties& properties, const char* key);
/// "(none)" where there is no such tag.
[[nodiscard]] std::string exifText(const ImageProperties& properties, const char* key);
[[nodiscard]] std::string xmpText(const ImageProperties& properties, const char* key);
/// All that XMP says but the note of a second packet.
[[nodiscard]] std::map<std::string, std::string> xmpTexts(const ImageProperties& properties);
[[nodiscard]] int iptcCount(const ImageProperties& properties, const char* key);

} // namespace MetadataSamples
