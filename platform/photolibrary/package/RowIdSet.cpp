#include "RowIdSet.h"

#include "Leb128.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

namespace
{

constexpr quint64 kLastWord = std::numeric_limits<quint32>::max();

/// Words are stored plus one.
bool nextWord(Leb128Reader& reader, quint32& word)
{
    quint64 stored = 0;
    if (!reader.next(stored) || stored == 0 || stored - 1 > kLastWord) {
        return false;
    }
    word = static_cast<quint32>(stored - 1);
    return true;
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
    Leb128Reader reader(blob);
    quint64 format = 0;
    quint64 total = 0;
    quint64 chunks = 0;
    if (!reader.next(format) || !reader.next(total) || !reader.next(chunks) || format != kFormat) {
        return std::nullopt;
    }
    RowIdSet result;
    constexpr quint64 kLeastBytesOfChunk = kWords + 2;
    result.m_chunks.reserve(
        std::min(chunks, static_cast<quint64>(blob.size()) / kLeastBytesOfChunk));
    for (quint64 i = 0; i < chunks; ++i) {
        constexpr qint64 kLast = std::numeric_limits<qint64>::max() / kIdsPerChunk;
        quint64 number = 0;
        quint64 count = 0;
        if (!reader.next(number) || !reader.next(count) || number >= static_cast<quint64>(kLast)) {
            return std::nullopt;
        }
        Chunk chunk{static_cast<qint64>(number), {}};
        for (quint32& word : chunk.words) {
            if (!nextWord(reader, word)) {
                return std::nullopt;
            }
        }
        result.unite(chunk);
    }
    return reader.atEnd() ? std::optional(std::move(result)) : std::nullopt;
}

QByteArray RowIdSet::toBlob() const
{
    constexpr qsizetype kMostBytesOfChunk = qsizetype{5} * kWords + 12;
    QByteArray bytes;
    bytes.reserve(std::ssize(m_chunks) * kMostBytesOfChunk);
    appendLeb128(bytes, kFormat);
    appendLeb128(bytes, 0);
    appendLeb128(bytes, static_cast<quint64>(m_chunks.size()));
    for (const Chunk& chunk : m_chunks) {
        appendLeb128(bytes, static_cast<quint64>(chunk.number));
        const int count =
            std::accumulate(chunk.words.begin(), chunk.words.end(), 0, [](int sum, quint32 word) {
                return sum + std::popcount(word);
            });
        appendLeb128(bytes, static_cast<quint64>(count));
        for (const quint32 word : chunk.words) {
            appendLeb128(bytes, static_cast<quint64>(word) + 1);
        }
    }
    return bytes;
}

std::vector<RowIdSet::Chunk>::iterator RowIdSet::placeOf(qint64 number)
{
    // Ids mostly come in rising order.
    if (m_chunks.empty() || m_chunks.back().number < number) {
        return m_chunks.end();
    }
    return m_chunks.back().number == number
               ? std::prev(m_chunks.end())
               : std::ranges::lower_bound(m_chunks, number, {}, &Chunk::number);
}

const RowIdSet::Words* RowIdSet::find(qint64 number) const
{
    const auto place = std::ranges::lower_bound(m_chunks, number, {}, &Chunk::number);
    return place == m_chunks.end() || place->number != number ? nullptr : &place->words;
}

RowIdSet::Words& RowIdSet::wordsOf(qint64 number)
{
    auto place = placeOf(number);
    if (place == m_chunks.end() || place->number != number) {
        place = m_chunks.insert(place, Chunk{number, {}});
    }
    return place->words;
}

void RowIdSet::insert(qint64 id)
{
    if (id < 0) {
        return;
    }
    const qint64 within = id % kIdsPerChunk;
    wordsOf(id / kIdsPerChunk)[static_cast<std::size_t>(within / kIdsPerWord)] |=
        1U << (within % kIdsPerWord);
}

void RowIdSet::remove(qint64 id)
{
    const auto chunk = placeOf(id / kIdsPerChunk);
    if (id < 0 || chunk == m_chunks.end() || chunk->number != id / kIdsPerChunk) {
        return;
    }
    const qint64 within = id % kIdsPerChunk;
    chunk->words[static_cast<std::size_t>(within / kIdsPerWord)] &= ~(1U << (within % kIdsPerWord));
    if (chunk->words == Words{}) {
        m_chunks.erase(chunk);
    }
}

void RowIdSet::unite(const RowIdSet& other)
{
    for (const Chunk& chunk : other.m_chunks) {
        unite(chunk);
    }
}

void RowIdSet::subtract(const RowIdSet& other)
{
    for (const Chunk& chunk : other.m_chunks) {
        const auto mine = placeOf(chunk.number);
        if (mine == m_chunks.end() || mine->number != chunk.number) {
            continue;
        }
        for (std::size_t word = 0; word < mine->words.size(); ++word) {
            mine->words[word] &= ~chunk.words[word];
        }
        if (mine->words == Words{}) {
            m_chunks.erase(mine);
        }
    }
}

void RowIdSet::unite(const Chunk& chunk)
{
    if (chunk.words == Words{}) {
        return;
    }
    Words& mine = wordsOf(chunk.number);
    for (std::size_t word = 0; word < mine.size(); ++word) {
        mine[word] |= chunk.words[word];
    }
}

bool RowIdSet::contains(qint64 id) const
{
    const Words* const words = id < 0 ? nullptr : find(id / kIdsPerChunk);
    if (words == nullptr) {
        return false;
    }
    const qint64 within = id % kIdsPerChunk;
    return ((*words)[static_cast<std::size_t>(within / kIdsPerWord)] >> (within % kIdsPerWord) &
            1U) != 0;
}

bool RowIdSet::containsAll(const RowIdSet& other) const
{
    return std::ranges::all_of(other.m_chunks, [this](const Chunk& chunk) {
        const Words* const mine = find(chunk.number);
        return mine != nullptr &&
               std::ranges::equal(*mine, chunk.words, [](quint32 one, quint32 wanted) {
                   return (one & wanted) == wanted;
               });
    });
}

QList<qint64> RowIdSet::ids() const
{
    QList<qint64> result;
    for (const Chunk& chunk : m_chunks) {
        for (qint64 within = 0; within < kIdsPerChunk; ++within) {
            const quint32 word = chunk.words[static_cast<std::size_t>(within / kIdsPerWord)];
            if ((word >> (within % kIdsPerWord) & 1U) != 0) {
                result.append(chunk.number * kIdsPerChunk + within);
            }
        }
    }
    return result;
}
