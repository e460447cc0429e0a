#pragma once

#include <QByteArray>

#include <cstring>

/// Unsigned numbers in LEB128: seven bits a byte, the lowest first, and the highest bit of every
/// byte of a number but the last is set.
class Leb128Reader final
{
public:
    /// The bytes must outlive the reader.
    explicit Leb128Reader(const QByteArray& bytes)
        : m_begin(bytes.constBegin())
        , m_next(m_begin)
        , m_end(bytes.constEnd())
    {
    }

    /// False at the end of the bytes and for a number of 63 bits or more; every further one fails
    /// too.
    [[nodiscard]] bool next(quint64& number)
    {
        number = 0;
        for (unsigned shift = 0; shift < 63; shift += 7) {
            if (m_next == m_end) {
                return false;
            }
            const auto byte = static_cast<quint8>(*m_next++);
            number |= static_cast<quint64>(byte & 0x7FU) << shift;
            if ((byte & 0x80U) == 0) {
                return true;
            }
        }
        m_next = m_end;
        return false;
    }

    /// Steps over so many numbers, eight bytes at a time, and does not judge them. False when there
    /// are fewer.
    [[nodiscard]] bool skip(int numbers)
    {
        constexpr quint64 kHighest = 0x8080808080808080U;
        constexpr quint64 kOnes = 0x0101010101010101U;
        quint64 bytes = 0;
        while (m_end - m_next >= static_cast<qsizetype>(sizeof bytes)) {
            std::memcpy(&bytes, m_next, sizeof bytes);
            // The product sums up the bytes in the highest one.
            const auto ended = static_cast<int>((((~bytes & kHighest) >> 7U) * kOnes) >> 56U);
            if (ended >= numbers) {
                break;
            }
            numbers -= ended;
            m_next += sizeof bytes;
        }
        for (; numbers > 0 && m_next != m_end; ++m_next) {
            numbers -= (static_cast<quint8>(*m_next) & 0x80U) == 0 ? 1 : 0;
        }
        return numbers == 0;
    }

    /// Of the next number, in bytes from the begin.
    [[nodiscard]] qsizetype position() const { return m_next - m_begin; }

    [[nodiscard]] bool atEnd() const { return m_next == m_end; }

private:
    QByteArray::const_iterator m_begin;
    QByteArray::const_iterator m_next;
    QByteArray::const_iterator m_end;
};

inline void appendLeb128(QByteArray& bytes, quint64 number)
{
    while (number > 0x7FU) {
        bytes.append(static_cast<char>((number & 0x7FU) | 0x80U));
        number >>= 7U;
    }
    bytes.append(static_cast<char>(number));
}
