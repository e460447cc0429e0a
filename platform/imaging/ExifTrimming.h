#pragma once

#include "ImageProperties.h"

#include <QByteArray>

/// Exif as bytes of at most a given number. To be called from within MetadataAdapter::attempt()
/// only; Exiv2's exceptions pass through.
namespace ExifTrimming
{

/// A TIFF structure of Exif, GPS and maker note. What is too much is taken out of `content`: the
/// thumbnail first, then the maker note, then the largest tags; so is any tag that Exiv2 cannot
/// write. The system log says what. Empty where nothing is left.
[[nodiscard]] QByteArray encode(ImageProperties::Content& content, qsizetype largest);

} // namespace ExifTrimming
