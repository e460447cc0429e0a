#pragma once

#include "ImageProperties.h"

#include <QSize>

#include <exiv2/iptc.hpp>
#include <string_view>
#include <vector>

/// What of a picture's metadata holds for a JPEG copy of it. To be called from within
/// MetadataAdapter::attempt() only.
namespace MetadataPruning
{

/// Leaves the tags that MetadataTags names and the maker note without its pictures, and sets those
/// that describe the JPEG: nothing tells any more how the original file was built (strips and
/// tiles, sub-images, RAW and DNG data, thumbnails and previews, profiles, tags of unknown
/// meaning). Tags of the photo that stand where only RAW files have them move to where a JPEG has
/// them.
void makeExifTrue(ImageProperties::Content& content, QSize pixels);

/// Removes from IPTC the preview, and the records of the picture's data.
void makeIptcTrue(Exiv2::IptcData& iptc);

/// The same as for Exif for XMP. Keeps the history and rights of the photo.
void makeXmpTrue(ImageProperties::Content& content, QSize pixels);

/// The single tags that makeExifTrue() looks for by name. A name that Exiv2 does not give itself
/// would never be found.
[[nodiscard]] std::vector<std::string_view> namedTags();

/// Whether one pixel of the copy shows what one of the original did: makers and decoders disagree
/// over a few at the edges, which is not a reduction. To be asked of the original's tags.
[[nodiscard]] bool hasScaleOfOriginal(const ImageProperties::Content& content, QSize pixels);

/// Whether the tag belongs to a maker note: to none of the directories of the standard.
[[nodiscard]] bool isOfMakerNote(const std::string& group);

/// Takes the maker note out, decoded parts and all.
void removeMakerNote(ImageProperties::Content& content);

} // namespace MetadataPruning
