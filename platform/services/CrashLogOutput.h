#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// A number in decimal digits, filled up to `width` on the left.
struct Decimal {
    long long value;
    std::size_t width{0};
    char fill{' '};
};

/// A number in hexadecimal digits after "0x", filled with zeros to at least `width` digits.
struct Hexadecimal {
    std::uintptr_t value;
    std::size_t width{1};
};

/// Bytes in hexadecimal digits, two each.
struct HexadecimalBytes {
    std::span<const std::uint8_t> bytes;
};

/// Text on its way to a file descriptor. Calls nothing but write(2), so that it may be used in a
/// signal handler: no allocation, no lock, none of the C library's streams.
/// Errors: what cannot be written is dropped; wasWritten() tells.
/// Thread: one at a time.
class CrashLogOutput final
{
public:
    /// `descriptor` stays the caller's.
    explicit CrashLogOutput(int descriptor) noexcept
        : m_descriptor(descriptor)
    {
    }

    ~CrashLogOutput() { flush(); }

    CrashLogOutput(const CrashLogOutput&) = delete;
    CrashLogOutput& operator=(const CrashLogOutput&) = delete;

    CrashLogOutput& operator<<(std::string_view text) noexcept;
    CrashLogOutput& operator<<(char character) noexcept;
    CrashLogOutput& operator<<(Decimal number) noexcept;
    CrashLogOutput& operator<<(Hexadecimal number) noexcept;
    CrashLogOutput& operator<<(HexadecimalBytes number) noexcept;

    /// Hands everything over to the kernel: it then outlives the process.
    void flush() noexcept;

    /// Whether anything has reached the descriptor.
    [[nodiscard]] bool wasWritten() const noexcept { return m_wasWritten; }

private:
    void putDigits(unsigned long long value, unsigned base, std::size_t width, char fill) noexcept;

    int m_descriptor;
    bool m_wasWritten{false};
    std::size_t m_used{0};
    std::array<char, 2048> m_buffer{};
};
