#include "RowIdBlob.h"

#include "Leb128.h"

#include <QList>

#include <algorithm>

namespace
{

/// Where the chunk of a number lies in a stored set.
struct Place {
    quint64 chunks{0};   ///< that the set has
    qsizetype first{0};  ///< where chunks begin
    qsizetype begin{0};  ///< of the chunk, or where it belongs
    qsizetype end{0};    ///< the same where it is not there
    bool inOrder{false}; ///< the chunks rise; else the chunk was not looked for
};

std::optional<Place> placeOf(const QByteArray& blob, quint64 number)
{
    Leb128Reader reader(blob);
    Place place;
    quint64 format = 0;
    quint64 total = 0;
    if (!reader.next(format) || !reader.next(total) || !reader.next(place.chunks) ||
        format != RowIdSet::kFormat) {
        return std::nullopt;
    }
    place.first = place.begin = place.end = reader.position();
    place.inOrder = true;
    quint64 last = 0;
    for (quint64 i = 0; i < place.chunks; ++i) {
        const qsizetype begin = reader.position();
        quint64 chunk = 0;
        if (!reader.next(chunk) || !reader.skip(1 + RowIdSet::kWords)) {
            return std::nullopt;
        }
        place.inOrder = place.inOrder && (i == 0 || chunk > last);
        last = chunk;
        if (chunk <= number) {
            place.begin = chunk == number ? begin : reader.position();
            place.end = reader.position();
        }
    }
    return reader.atEnd() ? std::optional(place) : std::nullopt;
}

QByteArray headOf(quint64 chunks)
{
    QByteArray head;
    appendLeb128(head, RowIdSet::kFormat);
    appendLeb128(head, 0); // the number of ids, not known
    appendLeb128(head, chunks);
    return head;
}

using Change = void (RowIdSet::*)(const RowIdSet& ids);

/// `ids` are of the chunk of that number.
std::optional<QByteArray>
withChunk(const QByteArray& blob, quint64 number, const RowIdSet& ids, Change change)
{
    const std::optional<Place> place = placeOf(blob, number);
    if (!place) {
        return std::nullopt;
    }
    const bool isThere = place->begin != place->end;
    const QByteArray own = blob.sliced(place->begin, place->end - place->begin);
    std::optional<RowIdSet> chunk =
        RowIdSet::fromBlob(place->inOrder ? headOf(isThere ? 1 : 0) + own : blob);
    if (!chunk) {
        return std::nullopt;
    }
    const RowIdSet before = *chunk;
    (*chunk.*change)(ids);
    if (*chunk == before) {
        return blob;
    }
    QByteArray made = chunk->toBlob();
    if (!place->inOrder) {
        return made; // the whole of it
    }
    const quint64 chunks = place->chunks - (isThere ? 1 : 0) + (chunk->isEmpty() ? 0 : 1);
    const QByteArrayView stored(blob);
    QByteArray result = headOf(chunks);
    result.reserve(result.size() + blob.size() + made.size());
    result.append(stored.sliced(place->first, place->begin - place->first));
    result.append(QByteArrayView(made).sliced(headOf(1).size()));
    result.append(stored.sliced(place->end));
    return result;
}

std::optional<QByteArray> changed(const QByteArray& blob, const RowIdSet& ids, Change change)
{
    std::optional<QByteArray> result = blob;
    const QList<qint64> all = ids.ids();
    const auto chunkOf = [](qint64 id) { return id / RowIdSet::kIdsPerChunk; };
    for (auto id = all.begin(); id != all.end() && result;) {
        const qint64 chunk = chunkOf(*id);
        const auto next =
            std::find_if(id, all.end(), [&](qint64 other) { return chunkOf(other) != chunk; });
        result = withChunk(
            *result, static_cast<quint64>(chunk), RowIdSet(QList<qint64>(id, next)), change);
        id = next;
    }
    return result;
}

} // namespace

std::optional<QByteArray> RowIdBlob::united(const QByteArray& blob, const RowIdSet& ids)
{
    return changed(blob, ids, &RowIdSet::unite);
}

std::optional<QByteArray> RowIdBlob::without(const QByteArray& blob, const RowIdSet& ids)
{
    return changed(blob, ids, &RowIdSet::subtract);
}

bool RowIdBlob::isEmpty(const QByteArray& blob)
{
    const std::optional<Place> place = placeOf(blob, 0);
    return place && place->chunks == 0;
}
