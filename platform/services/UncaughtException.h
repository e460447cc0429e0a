#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <string_view>

/// What is told of the exception that nobody caught: kept from std::terminate until the signal that
/// ends the process. Everything else is for signal handlers too.
class UncaughtException final
{
public:
    /// Takes the exception that is being handled, if there is one. Only the first call in a process
    /// does; any thread. For a handler of std::terminate: it may allocate, where there is still
    /// memory to be had, and what it could take until then is kept.
    void takeCurrent() noexcept;

    /// Whether std::terminate was called in this thread.
    [[nodiscard]] bool isOf(pid_t thread) const noexcept { return m_thread.load() == thread; }

    /// Its type as the source has it ("std::runtime_error"); empty when there was none: a thread
    /// that was neither joined nor detached, say.
    [[nodiscard]] std::string_view type() const noexcept { return {m_type.data(), m_typeLength}; }

    /// Its what(), without quoted names and paths (PathRedaction); empty for what is no
    /// std::exception.
    [[nodiscard]] std::string_view text() const noexcept { return {m_text.data(), m_textLength}; }

private:
    void setType(std::string_view name) noexcept;

    std::atomic<pid_t> m_thread{0};
    std::size_t m_typeLength{0};
    std::size_t m_textLength{0};
    std::array<char, 256> m_type{};
    std::array<char, 1024> m_text{};
};
