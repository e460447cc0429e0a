#pragma once

#include "ImageProperties.h"

#include <QByteArray>
#include <QString>

#include <exiv2/exif.hpp>
#include <optional>

/// Values of single tags, without surprises: what is missing or makes no sense is absent. To be
/// called from within MetadataAdapter::attempt() only, but for profileName().
namespace MetadataValues
{

/// Without the zero bytes and blanks around it; UTF-8, else Latin-1.
[[nodiscard]] QString textOf(const Exiv2::ExifData& exif, const char* key);

/// The bytes of a tag of type BYTE or UNDEFINED.
[[nodiscard]] QByteArray bytesOf(const Exiv2::ExifData& exif, const char* key);

/// One of the tag's numbers; nothing for fractions without a finite value.
[[nodiscard]] std::optional<double>
numberOf(const Exiv2::ExifData& exif, const char* key, long index = 0);

/// Fills in title, caption, byline, copyright notice and keywords from XMP, IPTC and Exif.
void readDescriptions(const ImageProperties::Content& content, ImageFacts& facts);

/// The description that an ICC profile carries; empty for none. Any thread.
[[nodiscard]] QString profileName(const QByteArray& icc);

} // namespace MetadataValues
