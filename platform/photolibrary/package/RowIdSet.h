#pragma once

#include <QByteArray>
#include <QList>

#include <array>
#include <optional>
#include <vector>

/// A set of row ids as the library's own indexes store it: a bitmap in chunks of 1024 ids, written
/// as a sequence of LEB128 numbers:
///
///     1  total  chunks  { chunk number, ids in it, 32 words of 32 bits, each plus one }*
///
/// The total is a cache; 0 says that it is not known.
class RowIdSet final
{
public:
    static constexpr quint64 kFormat = 1; ///< the first number
    static constexpr int kWords = 32;     ///< of a chunk
    static constexpr qint64 kIdsPerWord = 32;
    static constexpr qint64 kIdsPerChunk = kWords * kIdsPerWord;

    RowIdSet() = default;
    /// Negative ids are left out: there is no such row.
    explicit RowIdSet(const QList<qint64>& ids);

    /// Nothing for bytes that are no such set. Numbers of ids, which are caches, are not compared
    /// with the bitmaps.
    [[nodiscard]] static std::optional<RowIdSet> fromBlob(const QByteArray& blob);
    [[nodiscard]] QByteArray toBlob() const;

    void insert(qint64 id);
    void remove(qint64 id);
    void unite(const RowIdSet& other);
    void subtract(const RowIdSet& other);

    [[nodiscard]] bool isEmpty() const { return m_chunks.empty(); }

    [[nodiscard]] bool contains(qint64 id) const;
    /// Whether every id of the other set is in this one too.
    [[nodiscard]] bool containsAll(const RowIdSet& other) const;
    /// In rising order.
    [[nodiscard]] QList<qint64> ids() const;

    friend bool operator==(const RowIdSet&, const RowIdSet&) = default;

private:
    using Words = std::array<quint32, kWords>;

    struct Chunk {
        qint64 number{0}; ///< of its ids, without remainder by kIdsPerChunk
        Words words{};

        friend bool operator==(const Chunk&, const Chunk&) = default;
    };

    /// The chunk of that number, or where it belongs.
    [[nodiscard]] std::vector<Chunk>::iterator placeOf(qint64 number);
    [[nodiscard]] const Words* find(qint64 number) const;
    /// The words of a chunk, which may be all 0 when they are new.
    [[nodiscard]] Words& wordsOf(qint64 number);
    void unite(const Chunk& chunk);

    /// In rising order; never an empty one.
    std::vector<Chunk> m_chunks;
};
