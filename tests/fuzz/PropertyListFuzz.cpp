#include "FuzzTarget.h"
#include "PropertyList.h"

#include <cstdint>
#include <cstdlib>

/// Any bytes are either refused or a list that can be written and read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const Result<QVariant> parsed = PropertyList::parse(bytes);
    if (parsed.ok()) {
        const Result<QByteArray> written = PropertyList::toBinary(parsed.value());
        if (!written.ok() || !PropertyList::parse(written.value()).ok()) {
            std::abort();
        }
    }
    return 0;
}
