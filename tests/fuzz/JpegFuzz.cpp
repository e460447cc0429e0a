#include "FuzzTarget.h"
#include "JpegDecoder.h"

#include <cstdint>

/// Any bytes either decode as a whole JPEG or are refused.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    static_cast<void>(JpegDecoder::decode(bytes).ok());
    return 0;
}
