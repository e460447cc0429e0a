#include "CrashLogOutput.h"

#include <unistd.h>

#include <cerrno>

namespace
{

constexpr std::string_view kDigits = "0123456789abcdef";

} // namespace

CrashLogOutput& CrashLogOutput::operator<<(std::string_view text) noexcept
{
    for (const char character : text) {
        *this << character;
    }
    return *this;
}

CrashLogOutput& CrashLogOutput::operator<<(char character) noexcept
{
    if (m_used == m_buffer.size()) {
        flush();
    }
    m_buffer[m_used] = character;
    ++m_used;
    return *this;
}

CrashLogOutput& CrashLogOutput::operator<<(Decimal number) noexcept
{
    auto magnitude = static_cast<unsigned long long>(number.value);
    if (number.value < 0) {
        *this << '-';
        magnitude = 0 - magnitude; // also right for the least number, which has no opposite
    }
    putDigits(magnitude, 10, number.width, number.fill);
    return *this;
}

CrashLogOutput& CrashLogOutput::operator<<(Hexadecimal number) noexcept
{
    *this << std::string_view("0x");
    putDigits(number.value, 16, number.width, '0');
    return *this;
}

CrashLogOutput& CrashLogOutput::operator<<(HexadecimalBytes number) noexcept
{
    for (const std::uint8_t byte : number.bytes) {
        *this << kDigits[byte >> 4U] << kDigits[byte & 0xFU];
    }
    return *this;
}

void CrashLogOutput::putDigits(unsigned long long value,
                               unsigned base,
                               std::size_t width,
                               char fill) noexcept
{
    std::array<char, 24> digits{}; // 2^64 has 20
    std::size_t count = 0;
    do {
        digits[count] = kDigits[value % base];
        ++count;
        value /= base;
    } while (value != 0);
    for (std::size_t filled = count; filled < width; ++filled) {
        *this << fill;
    }
    while (count > 0) {
        --count;
        *this << digits[count];
    }
}

void CrashLogOutput::flush() noexcept
{
    std::size_t done = 0;
    while (done < m_used) {
        const ssize_t count = ::write(m_descriptor, &m_buffer[done], m_used - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
        m_wasWritten = true;
    }
    m_used = 0;
}
