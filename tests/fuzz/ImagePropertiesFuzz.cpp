#include "FuzzTarget.h"
#include "ImageProperties.h"
#include "MetadataSegments.h"

#include <QSize>

/// Metadata of any bytes is read, told, changed as a conversion does, and laid out for a JPEG
/// without a crash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    Result<ImageProperties> properties = ImageProperties::fromBytes(bytes);
    if (properties.ok()) {
        properties.value().removeIptcKeywords();
        properties.value().removeExifKeywords();
        properties.value().removeXmpSubjects();
        static_cast<void>(properties.value().hasGps());
        static_cast<void>(properties.value().facts());
        static_cast<void>(
            MetadataSegments::build(properties.value(), QSize(48, 32), QByteArray("thumbnail")));
    }
    return 0;
}
