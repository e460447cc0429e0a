#include "LosslessJpeg.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <functional>
#include <vector>

namespace
{

/// A difference is coded as its number of bits, 0 to 16, and those bits.
constexpr int kCategories = 17;
constexpr int kLongestCode = 16;
/// What stands above and left of the first value, with 16 bits a value.
constexpr int kFirstPrediction = 1 << 15;

struct Code {
    quint32 bits{0};
    int length{0};
};

struct CodeTable {
    std::array<int, kLongestCode + 1> codesOfLength{};
    std::vector<quint8> categories; ///< by ascending length of their codes
    std::array<Code, kCategories> codes{};
};

int categoryOf(int difference)
{
    return static_cast<int>(std::bit_width(static_cast<quint32>(std::abs(difference))));
}

/// Calls `use` with each difference, in the order in which they are coded.
template <typename Use>
void eachDifference(std::span<const quint16> values, int width, int height, Use use)
{
    for (int y = 0; y < height; ++y) {
        const auto row = values.subspan(static_cast<size_t>(y) * static_cast<size_t>(width));
        for (size_t x = 0; x < static_cast<size_t>(width); ++x) {
            const int prediction =
                x >= 2   ? int{row[x - 2]}
                : y == 0 ? kFirstPrediction
                         : int{values[static_cast<size_t>(y - 1) * static_cast<size_t>(width) + x]};
            // Differences are taken modulo 2^16 (T.81, H.1.2.1).
            use(int{static_cast<qint16>(static_cast<quint16>(int{row[x]} - prediction))});
        }
    }
}

/// The lengths of the best prefix code for these frequencies (T.81, annex K.2). One imagined
/// symbol more takes the code of all ones, which must not be used.
std::array<int, kCategories + 1> codeLengths(const std::array<qint64, kCategories>& counts)
{
    struct Node {
        qint64 count;
        std::vector<size_t> symbols;
    };

    std::array<int, kCategories + 1> lengths{};
    std::vector<Node> nodes{{0, {kCategories}}};
    for (size_t category = 0; category < kCategories; ++category) {
        if (counts[category] > 0) {
            nodes.push_back({counts[category], {category}});
        }
    }
    while (nodes.size() > 1) {
        // The two rarest become one; the imagined symbol, rarest of all, comes to lie deepest.
        std::ranges::stable_sort(nodes, std::greater{}, &Node::count);
        const Node rarest = nodes.back();
        nodes.pop_back();
        nodes.back().count += rarest.count;
        nodes.back().symbols.insert(
            nodes.back().symbols.end(), rarest.symbols.begin(), rarest.symbols.end());
        for (const size_t symbol : nodes.back().symbols) {
            ++lengths[symbol];
        }
    }
    return lengths;
}

CodeTable makeTable(const std::array<qint64, kCategories>& counts)
{
    const auto lengths = codeLengths(counts);
    std::array<int, kCategories + 2> wanted{};
    for (const int length : lengths) {
        ++wanted[static_cast<size_t>(length)];
    }
    // Eighteen symbols may reach a length of 17, one more than allowed: such a pair is broken up,
    // and a shorter code is made room for (T.81, figure K.3).
    while (wanted[kLongestCode + 1] > 0) {
        size_t shorter = kLongestCode - 1;
        while (wanted[shorter] == 0) {
            --shorter;
        }
        wanted[kLongestCode + 1] -= 2;
        ++wanted[kLongestCode];
        wanted[shorter + 1] += 2;
        --wanted[shorter];
    }
    size_t longest = kLongestCode;
    while (wanted[longest] == 0) {
        --longest;
    }
    --wanted[longest]; // the imagined symbol

    CodeTable table;
    for (quint8 category = 0; category < kCategories; ++category) {
        if (counts[category] > 0) {
            table.categories.push_back(category);
        }
    }
    std::ranges::stable_sort(
        table.categories, std::less{}, [&lengths](quint8 category) { return lengths[category]; });
    quint32 next = 0;
    size_t symbol = 0;
    for (int length = 1; length <= kLongestCode; ++length) {
        const int many = wanted[static_cast<size_t>(length)];
        table.codesOfLength[static_cast<size_t>(length)] = many;
        for (int i = 0; i < many; ++i) {
            table.codes[table.categories[symbol++]] = {next++, length};
        }
        next <<= 1;
    }
    return table;
}

/// Writes bits, the highest first; a byte of ones is followed by an empty one (T.81, F.1.2.3).
class BitWriter final
{
public:
    explicit BitWriter(QByteArray& bytes)
        : m_bytes(bytes)
    {
    }

    void write(quint32 bits, int count)
    {
        m_pending = (m_pending << count) | (bits & ((quint64{1} << count) - 1));
        m_count += count;
        while (m_count >= 8) {
            m_count -= 8;
            const auto byte = static_cast<quint8>(m_pending >> m_count);
            m_bytes.append(static_cast<char>(byte));
            if (byte == 0xFF) {
                m_bytes.append('\0');
            }
        }
    }

    /// Fills the last byte up with ones.
    void finish()
    {
        if (m_count > 0) {
            write(0xFF, 8 - m_count);
        }
    }

private:
    QByteArray& m_bytes;
    quint64 m_pending{0};
    int m_count{0};
};

void appendMarker(QByteArray& bytes, quint8 marker, const QByteArray& segment)
{
    const auto length = segment.size() + 2;
    bytes.append('\xFF').append(static_cast<char>(marker));
    bytes.append(static_cast<char>(length >> 8)).append(static_cast<char>(length & 0xFF));
    bytes.append(segment);
}

QByteArray frameHeader(int width, int height)
{
    QByteArray segment;
    segment.append(char{16}); // bits a value, as the file's BitsPerSample says
    segment.append(static_cast<char>(height >> 8)).append(static_cast<char>(height & 0xFF));
    segment.append(static_cast<char>(width / 2 >> 8)).append(static_cast<char>(width / 2 & 0xFF));
    segment.append(char{2});
    segment.append("\x00\x11\x00\x01\x11\x00", 6);
    return segment;
}

} // namespace

QByteArray LosslessJpeg::encode(std::span<const quint16> values, int width, int height)
{
    std::array<qint64, kCategories> counts{};
    eachDifference(values, width, height, [&counts](int difference) {
        ++counts[static_cast<size_t>(categoryOf(difference))];
    });
    const CodeTable table = makeTable(counts);

    QByteArray tableSegment(1, '\0');
    for (int length = 1; length <= kLongestCode; ++length) {
        tableSegment.append(static_cast<char>(table.codesOfLength[static_cast<size_t>(length)]));
    }
    for (const quint8 category : table.categories) {
        tableSegment.append(static_cast<char>(category));
    }

    QByteArray bytes;
    bytes.reserve(static_cast<qsizetype>(values.size()) * 2);
    bytes.append("\xFF\xD8", 2);
    appendMarker(bytes, 0xC3, frameHeader(width, height));
    appendMarker(bytes, 0xC4, tableSegment);
    appendMarker(bytes, 0xDA, QByteArray("\x02\x00\x00\x01\x00\x01\x00\x00", 8));
    BitWriter writer(bytes);
    eachDifference(values, width, height, [&](int difference) {
        const int category = categoryOf(difference);
        const Code& code = table.codes[static_cast<size_t>(category)];
        writer.write(code.bits, code.length);
        if (category < 16) { // category 16 holds -32768 alone and needs no bits
            writer.write(static_cast<quint32>(difference < 0 ? difference - 1 : difference),
                         category);
        }
    });
    writer.finish();
    bytes.append("\xFF\xD9", 2);
    return bytes;
}
