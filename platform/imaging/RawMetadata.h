#pragma once

#include "ImageProperties.h"

#include <QByteArray>

/// What LibRaw finds out about RAW files whose metadata Exiv2 does not know, as Exif tags.
/// To be called from within MetadataAdapter::attempt() only.
namespace RawMetadata
{

/// Adds maker, model, date, exposure and orientation where the content says nothing of a camera;
/// tags that are there stay as they are (but exposure and serial number of CRW files, and the
/// orientation of Leaf's and Phase One's backs), and a file of another type with another camera's
/// name is not opened at all. True when the picture is a RAW file
/// that LibRaw knows. `path` in the file system's encoding.
bool completeFromFile(const QByteArray& path, ImageProperties::Content& content);
bool completeFromBytes(const QByteArray& bytes, ImageProperties::Content& content);

} // namespace RawMetadata
