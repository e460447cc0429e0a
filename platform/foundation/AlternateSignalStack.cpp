#include "AlternateSignalStack.h"

#include <sys/mman.h>
#include <unistd.h>

namespace
{

/// The kernel may save more than ten kilobytes of registers, and the unwinder needs some.
constexpr std::size_t kSize = 128UL * 1024;

std::size_t guardSize() noexcept
{
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// Its lowest page cannot be used, so that an overflow of this stack too is a fault, not damage.
void* mapStack() noexcept
{
    void* const memory = ::mmap(nullptr,
                                guardSize() + kSize,
                                PROT_READ | PROT_WRITE,
                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK,
                                -1,
                                0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    ::mprotect(memory, guardSize(), PROT_NONE);
    return memory;
}

bool use(void* memory, stack_t& previous) noexcept
{
    stack_t stack{};
    stack.ss_sp = static_cast<std::byte*>(memory) + guardSize();
    stack.ss_size = kSize;
    return ::sigaltstack(&stack, &previous) == 0;
}

} // namespace

AlternateSignalStack::AlternateSignalStack() noexcept
    : m_memory(mapStack())
{
    if (m_memory != nullptr && !use(m_memory, m_previous)) {
        ::munmap(m_memory, guardSize() + kSize);
        m_memory = nullptr;
    }
}

AlternateSignalStack::~AlternateSignalStack()
{
    if (m_memory != nullptr && ::sigaltstack(&m_previous, nullptr) == 0) {
        ::munmap(m_memory, guardSize() + kSize);
    }
}

void AlternateSignalStack::setUpForGood() noexcept
{
    void* const memory = mapStack();
    stack_t previous{};
    if (memory != nullptr && !use(memory, previous)) {
        ::munmap(memory, guardSize() + kSize);
    }
}
