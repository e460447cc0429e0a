#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// Takes numbers and pieces off the bytes that a fuzz target was given; what is beyond their end
/// reads as zero. It holds no copy: the bytes must outlive it.
class FuzzInput final
{
public:
    FuzzInput(const std::uint8_t* data, std::size_t size)
        : m_bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size))
    {
    }

    [[nodiscard]] bool isAtEnd() const { return m_bytes.isEmpty(); }

    [[nodiscard]] std::uint8_t byte()
    {
        const QByteArrayView taken = bytes(1);
        return taken.isEmpty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
    }

    /// Eight bytes, the least significant one first.
    [[nodiscard]] std::uint64_t number()
    {
        std::uint64_t value = 0;
        for (unsigned shift = 0; shift < 64; shift += 8) {
            value |= std::uint64_t{byte()} << shift;
        }
        return value;
    }

    /// At most so many bytes, fewer where they end.
    [[nodiscard]] QByteArrayView bytes(qsizetype count)
    {
        const QByteArrayView taken = m_bytes.first(std::min(count, m_bytes.size()));
        m_bytes = m_bytes.sliced(taken.size());
        return taken;
    }

private:
    QByteArrayView m_bytes;
};

/// Ends the process where what a fuzz target promises does not hold.
inline void requireHolds(bool holds)
{
    if (!holds) {
        std::abort();
    }
}
