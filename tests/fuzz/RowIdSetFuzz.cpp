#include "FuzzTarget.h"
#include "RowIdSet.h"

#include <cstdint>
#include <cstdlib>

/// Any bytes are either refused or a set that keeps its ids through its own blob.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const std::optional<RowIdSet> set = RowIdSet::fromBlob(bytes)) {
        const std::optional<RowIdSet> again = RowIdSet::fromBlob(set->toBlob());
        if (!again || !(*again == *set)) {
            std::abort();
        }
    }
    return 0;
}
