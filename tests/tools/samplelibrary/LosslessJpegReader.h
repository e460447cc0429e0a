#pragma once

#include <QByteArray>

#include <array>
#include <optional>
#include <utility>
#include <vector>

/// Decodes lossless JPEG with one Huffman table and predictor 1 (ITU-T T.81, annex H), apart from
/// the code under test.
struct LosslessJpegReader {
    int width{0}; ///< of all components together
    int height{0};
    int precision{0};
    std::array<int, 17> codesOfLength{};
    std::vector<quint16> values;

    /// Nothing where the bytes are no such picture or end early.
    static std::optional<LosslessJpegReader> read(const QByteArray& bytes)
    {
        LosslessJpegReader reader;
        qsizetype at = 2;
        const auto byte = [&bytes](qsizetype position) {
            return position < bytes.size() ? int{static_cast<quint8>(bytes.at(position))} : -1;
        };
        const auto pair = [&byte](qsizetype position) {
            return byte(position) * 256 + byte(position + 1);
        };
        if (pair(0) != 0xFFD8) {
            return std::nullopt;
        }
        std::vector<int> categories;
        int components = 0;
        const auto readTable = [&](qsizetype body) {
            qsizetype next = body + 17;
            for (int length = 1; length <= 16; ++length) {
                reader.codesOfLength.at(static_cast<size_t>(length)) = byte(body + length);
                for (int i = 0; i < byte(body + length); ++i) {
                    categories.push_back(byte(next++));
                }
            }
        };
        while (pair(at) != 0xFFDA) {
            const qsizetype body = at + 4;
            if (pair(at) == 0xFFC3) {
                reader.precision = byte(body);
                reader.height = pair(body + 1);
                components = byte(body + 5);
                reader.width = pair(body + 3) * components;
            } else if (pair(at) == 0xFFC4) {
                readTable(body);
            } else {
                return std::nullopt;
            }
            at = body + pair(at + 2) - 2;
        }
        at += 2 + pair(at + 2);
        return reader.readScan(bytes, at, components, categories) ? std::optional(reader)
                                                                  : std::nullopt;
    }

private:
    /// The bits of a scan.
    class Bits final
    {
    public:
        Bits(QByteArray bytes, qsizetype at)
            : m_bytes(std::move(bytes))
            , m_at(at)
        {
        }

        /// -1 at the end.
        int next()
        {
            if (m_count == 0) {
                if (m_at >= m_bytes.size()) {
                    return -1;
                }
                m_pending = static_cast<quint8>(m_bytes.at(m_at++));
                m_at += m_pending == 0xFF ? 1 : 0; // the empty byte behind it
                m_count = 8;
            }
            return m_pending >> --m_count & 1;
        }

        /// What follows the byte that the last bit was in.
        [[nodiscard]] QByteArray rest() const { return m_bytes.mid(m_at); }

    private:
        QByteArray m_bytes;
        qsizetype m_at;
        int m_pending{0};
        int m_count{0};
    };

    /// That of the next code; -1 where there is none.
    [[nodiscard]] int category(Bits& bits, const std::vector<int>& categories) const
    {
        int code = 0;
        int first = 0;
        size_t index = 0;
        for (size_t length = 1; length <= 16; ++length) {
            const int next = bits.next();
            if (next < 0) {
                return -1;
            }
            code = code * 2 + next;
            if (code - first < codesOfLength[length]) {
                return categories.at(index + static_cast<size_t>(code - first));
            }
            index += static_cast<size_t>(codesOfLength[length]);
            first = (first + codesOfLength[length]) * 2;
        }
        return -1;
    }

    /// Of the value that is next.
    [[nodiscard]] int prediction(int components) const
    {
        const int index = static_cast<int>(values.size());
        if (index % width >= components) {
            return values[static_cast<size_t>(index - components)];
        }
        return index >= width ? values[static_cast<size_t>(index - width)] : 1 << (precision - 1);
    }

    bool readScan(const QByteArray& bytes,
                  qsizetype at,
                  int components,
                  const std::vector<int>& categories)
    {
        Bits bits(bytes, at);
        for (int i = 0; i < width * height; ++i) {
            const int size = category(bits, categories);
            if (size < 0) {
                return false;
            }
            int difference = size == 16 ? 32768 : 0;
            for (int k = 0; k < size && size < 16; ++k) {
                difference = difference * 2 + bits.next();
            }
            if (size > 0 && size < 16 && difference < 1 << (size - 1)) {
                difference -= (1 << size) - 1;
            }
            values.push_back(static_cast<quint16>(prediction(components) + difference));
        }
        return bits.rest() == QByteArray("\xFF\xD9", 2);
    }
};
