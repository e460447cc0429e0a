#include "AlternateSignalStack.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <thread>

namespace
{

stack_t current()
{
    stack_t stack{};
    EXPECT_EQ(sigaltstack(nullptr, &stack), 0);
    return stack;
}

bool isSame(const stack_t& left, const stack_t& right)
{
    return left.ss_sp == right.ss_sp && left.ss_flags == right.ss_flags &&
           left.ss_size == right.ss_size;
}

} // namespace

TEST(AlternateSignalStack, aThreadHasItUntilTheScopeEnds)
{
    std::thread([] {
        const stack_t before = current();
        {
            const AlternateSignalStack stack;
            EXPECT_FALSE(isSame(current(), before));
            EXPECT_EQ(current().ss_flags, 0);
            EXPECT_GE(current().ss_size, 65536U);
        }
        EXPECT_TRUE(isSame(current(), before));
    }).join();
}

TEST(AlternateSignalStack, eachThreadHasItsOwn)
{
    const AlternateSignalStack stack;
    const stack_t mine = current();
    std::thread([&mine] {
        EXPECT_FALSE(isSame(current(), mine));
        const AlternateSignalStack another;
        EXPECT_NE(current().ss_sp, mine.ss_sp);
    }).join();
    EXPECT_TRUE(isSame(current(), mine));
}

TEST(AlternateSignalStack, allOfItCanBeUsed)
{
    const AlternateSignalStack stack;
    auto* const memory = static_cast<volatile char*>(current().ss_sp);
    memory[0] = 1;
    memory[current().ss_size - 1] = 1;
    EXPECT_EQ(memory[0] + memory[current().ss_size - 1], 2);
}
