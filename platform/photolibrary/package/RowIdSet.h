#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>

#include <array>
#include <optional>

/// A set of row ids as the library's own indexes store it: a bitmap in chunks of 1024 ids, written
/// as a sequence of LEB128 numbers:
///
///     1  total  chunks  { chunk number, ids in it, 32 words of 32 bits, each plus one }*
///
/// The total is a cache; 0 says that it is not known.
class RowIdSet final
{
public:
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

    [[nodiscard]] bool isEmpty() const { return m_chunks.isEmpty(); }

    [[nodiscard]] bool contains(qint64 id) const;
    /// Whether every id of the other set is in this one too.
    [[nodiscard]] bool containsAll(const RowIdSet& other) const;
    /// In rising order.
    [[nodiscard]] QList<qint64> ids() const;

    friend bool operator==(const RowIdSet&, const RowIdSet&) = default;

private:
    static constexpr int kWords = 32;
    static constexpr qint64 kIdsPerWord = 32;
    static constexpr qint64 kIdsPerChunk = kWords * kIdsPerWord;
    using Chunk = std::array<quint32, kWords>;

    /// By id / kIdsPerChunk; never an empty chunk.
    QMap<qint64, Chunk> m_chunks;
};
