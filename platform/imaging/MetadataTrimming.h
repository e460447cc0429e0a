#pragma once

#include "ImageProperties.h"

#include <QByteArray>

/// Metadata blocks as bytes of at most a given number. What is too much is taken out of `content`,
/// least useful first, and so is any part that Exiv2 cannot write; one line of the system log each
/// names the file and the first ten and says how many more there were. To be called from within
/// MetadataAdapter::attempt() only; Exiv2's exceptions pass through.
namespace MetadataTrimming
{

/// A TIFF structure of Exif, GPS and maker note. The thumbnail goes first, then the maker note,
/// then the largest tags. Empty where nothing is left.
[[nodiscard]] QByteArray encodeExif(ImageProperties::Content& content, qsizetype largest);

/// An XMP packet without padding. The largest properties go first. Empty where nothing is left.
[[nodiscard]] QByteArray encodeXmp(ImageProperties::Content& content, qsizetype largest);

} // namespace MetadataTrimming
