#include "FuzzTarget.h"
#include "HeifDecoder.h"
#include "ImageProperties.h"

/// Any bytes either decode as a HEIF picture or are refused, and so do their metadata.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto stated = HeifDecoder::size(bytes);
    // Larger ones only cost time.
    constexpr qint64 kPixels = qint64{1024} * 1024;
    if (!stated || qint64{stated->width()} * stated->height() <= kPixels) {
        static_cast<void>(HeifDecoder::decode(bytes).ok());
        static_cast<void>(HeifDecoder::thumbnail(bytes));
    }
    static_cast<void>(ImageProperties::fromBytes(bytes).ok());
    return 0;
}
