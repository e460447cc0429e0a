#include "CrashesOnPurpose.h"

#include <sys/mman.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace
{

/// Zero, but no compiler knows.
const volatile std::uintptr_t nothing = 0;

} // namespace

extern "C" {

CORVANE_UNCHECKED void writeToNowhere()
{
    *reinterpret_cast<volatile int*>(nothing + 16) = 1;
}

CORVANE_UNCHECKED int divideByZero()
{
#if defined(__x86_64__) || defined(__i386__)
    volatile int number = 7;
    return number / static_cast<int>(nothing);
#else
    return std::raise(SIGFPE); // the division gives zero there
#endif
}

CORVANE_UNCHECKED void executeRubbish()
{
#if defined(__x86_64__) || defined(__i386__)
    __asm__ volatile("ud2");
#else
    std::raise(SIGILL);
#endif
}

CORVANE_UNCHECKED void readBehindFile()
{
    std::FILE* const file = std::tmpfile();
    void* const memory = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fileno(file), 0);
    const int value = *static_cast<volatile int*>(memory);
    std::printf("%d\n", value);
}

CORVANE_UNCHECKED int recurse(int depth)
{
    volatile char block[64];
    block[depth % 64] = static_cast<char>(depth);
    return depth < 0 ? 0 : recurse(depth + 1) + block[0];
}

CORVANE_UNCHECKED void freeRubbish()
{
    auto* const block = static_cast<volatile std::size_t*>(std::malloc(64));
    volatile std::size_t* volatile before = block - 1;
    *before = 3; // the allocator's own note of its size
    std::free(const_cast<std::size_t*>(block));
    // Something is left to do: the call is no jump, and stands in the stack.
    static_cast<void>(nothing);
}
} // extern "C"

const CrashesOnPurpose::Kinds& CrashesOnPurpose::kinds()
{
    static const Kinds kKinds{
        {"segv", [] { writeToNowhere(); }},
        {"bus", [] { readBehindFile(); }},
        {"ill", [] { executeRubbish(); }},
        {"fpe", [] { std::printf("%d\n", divideByZero()); }},
        {"abort", [] { std::abort(); }},
        {"trap", [] { std::raise(SIGTRAP); }},
        {"sys", [] { std::raise(SIGSYS); }},
        {"overflow", [] { std::printf("%d\n", recurse(0)); }},
        {"heap", [] { freeRubbish(); }},
        {"exception", [] { throw std::runtime_error("No \"/home/anna/Our Photos/a.cr2\" there"); }},
    };
    return kKinds;
}
