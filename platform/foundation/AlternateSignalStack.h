#pragma once

#include <csignal>
#include <cstddef>

/// A stack for the signal handlers of the thread that made it, so that a crash log can be written
/// when the thread's own stack has overflowed; other crashes are told without it. Have one at the
/// begin of a thread's function; at its end what was there before is put back.
/// Thread: made and destroyed in the same one. Errors: where there is no memory, there is no such
/// stack, and nothing else is different.
class AlternateSignalStack final
{
public:
    AlternateSignalStack() noexcept;
    ~AlternateSignalStack();
    AlternateSignalStack(const AlternateSignalStack&) = delete;
    AlternateSignalStack& operator=(const AlternateSignalStack&) = delete;

    /// One for the calling thread that stays until the process ends.
    static void setUpForGood() noexcept;

private:
    void* m_memory;
    stack_t m_previous{};
};
