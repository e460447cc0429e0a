#include "FuzzTarget.h"
#include "ImageProperties.h"

#include <cstdint>

/// Metadata of any bytes is read, changed as a conversion does, and told without a crash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    Result<ImageProperties> properties = ImageProperties::fromBytes(bytes);
    if (properties.ok()) {
        properties.value().removeIptcKeywords();
        properties.value().removeXmpSubjects();
        static_cast<void>(properties.value().facts());
    }
    return 0;
}
