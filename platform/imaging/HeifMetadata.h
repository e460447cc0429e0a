#pragma once

#include "ImageProperties.h"

#include <QByteArray>

/// What the metadata of a HEIF file says once its picture lies as it is to be shown. To be called
/// from within MetadataAdapter::attempt() only.
namespace HeifMetadata
{

/// Makes size and orientation those of the decoded picture: it is upright, whatever the Exif block
/// says of the sensor's rows. Places that were told in those rows are left out where they moved.
/// True when it is a file that libheif knows.
bool makeUpright(const QByteArray& bytes, ImageProperties::Content& content);

} // namespace HeifMetadata
