#include "ProcessMemory.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace
{

std::uintptr_t addressOf(const void* place)
{
    return reinterpret_cast<std::uintptr_t>(place);
}

} // namespace

TEST(ProcessMemory, whatIsThereIsCopied)
{
    const std::array<std::byte, 3> from{std::byte{1}, std::byte{2}, std::byte{3}};
    std::array<std::byte, 3> to{};
    EXPECT_EQ(ProcessMemory::copy(addressOf(from.data()), to), ProcessMemory::Outcome::Copied);
    EXPECT_EQ(to, from);
}

TEST(ProcessMemory, whatIsNotThereIsAnAnswerAndNoFault)
{
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const memory = mmap(nullptr, 2 * pageSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    ASSERT_EQ(mprotect(static_cast<std::byte*>(memory) + pageSize, pageSize, PROT_NONE), 0);
    std::array<std::byte, 8> to{};
    errno = 77;
    for (const std::uintptr_t address : {std::uintptr_t{0},
                                         UINTPTR_MAX - 3,
                                         addressOf(memory) + pageSize,
                                         addressOf(memory) + pageSize - 4}) {
        EXPECT_EQ(ProcessMemory::copy(address, to), ProcessMemory::Outcome::NotThere);
    }
    EXPECT_EQ(errno, 77);
    EXPECT_EQ(ProcessMemory::copy(addressOf(memory) + pageSize - 8, to),
              ProcessMemory::Outcome::Copied);
    munmap(memory, 2 * pageSize);
}
