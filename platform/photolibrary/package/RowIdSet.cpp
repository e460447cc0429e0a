#include "RowIdSet.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <numeric>
#include <utility>

namespace
{

constexpr quint64 kFormat = 1;
constexpr quint64 kLastWord = std::numeric_limits<quint32>::max();

/// Reads LEB128 numbers; after a failure every further one fails too.
class NumberReader final
{
public:
    explicit NumberReader(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
    }

    std::optional<quint64> next()
    {
        quint64 number = 0;
        for (int shift = 0; shift < 63; shift += 7) {
            if (m_position >= m_bytes.size()) {
                return std::nullopt;
            }
            const auto byte = static_cast<quint8>(m_bytes.at(m_position++));
            number |= static_cast<quint64>(byte & 0x7FU) << shift;
            if ((byte & 0x80U) == 0) {
                return number;
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] bool atEnd() const { return m_position == m_bytes.size(); }

private:
    QByteArray m_bytes;
    qsizetype m_position{0};
};

void append(QByteArray& bytes, quint64 number)
{
    while (number > 0x7FU) {
        bytes.append(static_cast<char>((number & 0x7FU) | 0x80U));
        number >>= 7U;
    }
    bytes.append(static_cast<char>(number));
}

} // namespace

RowIdSet::RowIdSet(const QList<qint64>& ids)
{
    for (const qint64 id : ids) {
        insert(id);
    }
}

std::optional<RowIdSet> RowIdSet::fromBlob(const QByteArray& blob)
{
    NumberReader reader(blob);
    const std::optional<quint64> format = reader.next();
    const std::optional<quint64> total = reader.next();
    const std::optional<quint64> chunks = reader.next();
    if (format != kFormat || !total || !chunks) {
        return std::nullopt;
    }
    RowIdSet result;
    for (quint64 i = 0; i < *chunks; ++i) {
        const std::optional<quint64> number = reader.next();
        const std::optional<quint64> count = reader.next();
        constexpr qint64 kLast = std::numeric_limits<qint64>::max() / kIdsPerChunk;
        if (!number || !count || *number >= static_cast<quint64>(kLast)) {
            return std::nullopt;
        }
        Chunk chunk{};
        for (quint32& word : chunk) {
            const std::optional<quint64> stored = reader.next();
            if (!stored || *stored == 0 || *stored - 1 > kLastWord) {
                return std::nullopt;
            }
            word = static_cast<quint32>(*stored - 1);
        }
        RowIdSet part;
        part.m_chunks.insert(static_cast<qint64>(*number), chunk);
        result.unite(part);
    }
    return reader.atEnd() ? std::optional(result) : std::nullopt;
}

QByteArray RowIdSet::toBlob() const
{
    QByteArray bytes;
    append(bytes, kFormat);
    append(bytes, 0);
    append(bytes, static_cast<quint64>(m_chunks.size()));
    for (auto chunk = m_chunks.cbegin(); chunk != m_chunks.cend(); ++chunk) {
        append(bytes, static_cast<quint64>(chunk.key()));
        const int count =
            std::accumulate(chunk->begin(), chunk->end(), 0, [](int sum, quint32 word) {
                return sum + std::popcount(word);
            });
        append(bytes, static_cast<quint64>(count));
        for (const quint32 word : *chunk) {
            append(bytes, static_cast<quint64>(word) + 1);
        }
    }
    return bytes;
}

void RowIdSet::insert(qint64 id)
{
    if (id < 0) {
        return;
    }
    const qint64 within = id % kIdsPerChunk;
    m_chunks[id / kIdsPerChunk][static_cast<std::size_t>(within / kIdsPerWord)] |=
        1U << (within % kIdsPerWord);
}

void RowIdSet::remove(qint64 id)
{
    const auto chunk = m_chunks.find(id / kIdsPerChunk);
    if (id < 0 || chunk == m_chunks.end()) {
        return;
    }
    const qint64 within = id % kIdsPerChunk;
    (*chunk)[static_cast<std::size_t>(within / kIdsPerWord)] &= ~(1U << (within % kIdsPerWord));
    if (*chunk == Chunk{}) {
        m_chunks.erase(chunk);
    }
}

void RowIdSet::unite(const RowIdSet& other)
{
    for (auto chunk = other.m_chunks.cbegin(); chunk != other.m_chunks.cend(); ++chunk) {
        if (*chunk == Chunk{}) {
            continue;
        }
        Chunk& mine = m_chunks[chunk.key()];
        for (std::size_t word = 0; word < mine.size(); ++word) {
            mine[word] |= (*chunk)[word];
        }
    }
}

bool RowIdSet::contains(qint64 id) const
{
    const auto chunk = m_chunks.constFind(id / kIdsPerChunk);
    if (id < 0 || chunk == m_chunks.cend()) {
        return false;
    }
    const qint64 within = id % kIdsPerChunk;
    return ((*chunk)[static_cast<std::size_t>(within / kIdsPerWord)] >> (within % kIdsPerWord) &
            1U) != 0;
}

bool RowIdSet::containsAll(const RowIdSet& other) const
{
    RowIdSet both = *this;
    both.unite(other);
    return both == *this;
}

QList<qint64> RowIdSet::ids() const
{
    QList<qint64> result;
    for (auto chunk = m_chunks.cbegin(); chunk != m_chunks.cend(); ++chunk) {
        for (qint64 within = 0; within < kIdsPerChunk; ++within) {
            const quint32 word = (*chunk)[static_cast<std::size_t>(within / kIdsPerWord)];
            if ((word >> (within % kIdsPerWord) & 1U) != 0) {
                result.append(chunk.key() * kIdsPerChunk + within);
            }
        }
    }
    return result;
}
