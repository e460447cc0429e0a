#include "PictureMemory.h"

#include <malloc.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <limits>

namespace
{

/// What pictures of some 25 megapixels take; of memory that is not used nothing is taken.
constexpr std::size_t kHeap = 256UL * 1024 * 1024;
constexpr std::size_t kPage = 4096;

} // namespace

void PictureMemory::prepare() noexcept
{
    constexpr int kNever = std::numeric_limits<int>::max();
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, kNever);
    mallopt(M_TRIM_THRESHOLD, kNever);
    void* const block = std::malloc(kHeap); // NOLINT(*-no-malloc): the heap itself is meant
    if (block == nullptr) {
        return;
    }
    const auto place = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t begin = (place + kPage - 1) / kPage * kPage;
    ::madvise(reinterpret_cast<void*>(begin),
              (place + kHeap - begin) / kPage * kPage, // NOLINT
              MADV_HUGEPAGE);
    std::free(block); // NOLINT(*-no-malloc)
}
