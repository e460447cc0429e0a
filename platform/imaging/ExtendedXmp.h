#pragma once

#include "ImageProperties.h"

#include <QByteArrayView>

/// XMP of JPEG files that is more than a segment holds (ISO 16684-3, 1.1.3.1): a main packet with
/// a note, and the rest in pieces. To be called from within MetadataAdapter::attempt() only.
namespace ExtendedXmp
{

/// Whether the main packet notes that there is more.
[[nodiscard]] bool isNoted(const ImageProperties::Content& content);

/// Adds what the pieces in `jpeg` say to the properties, which it does not replace; where the
/// pieces are not whole, or are no XMP, the content remembers that they are lost.
void merge(QByteArrayView jpeg, ImageProperties::Content& content);

} // namespace ExtendedXmp
