#include "RowIdIndexes.h"

#include "Queries.h"
#include "RowIdBlob.h"

#include <QSet>

#include <sqlite3.h>

#include <optional>
#include <string_view>

using namespace Qt::StringLiterals;

namespace
{

using namespace RowIdCollection;

/// The stored bytes of a set; nothing where there is none.
std::optional<QByteArray> load(Connection& connection, const Source& source, const Key& key)
{
    const std::string sql =
        std::string("SELECT ridIndex FROM ") + source.indexes + " WHERE indexName=? AND value=?";
    Sql::Query query(connection, sql.c_str(), key.index, key.value);
    return query.next() ? std::optional(Sql::blob(query.column(0))) : std::nullopt;
}

[[noreturn]] void raiseNoSet(const Source& source, const Key& key)
{
    const QString what = u"index %1/%2/%3 holds no set of rows"_s.arg(
        QLatin1StringView(source.indexes), key.index, key.value);
    throw SQLite::Exception(what.toStdString(), SQLITE_CORRUPT);
}

void insert(Connection& connection, const Source& source, const Key& key, const RowIdSet& set)
{
    const std::string sql =
        std::string("INSERT INTO ") + source.indexes + "(indexName,value,ridIndex) VALUES(?,?,?)";
    Sql::execute(connection, sql.c_str(), key.index, key.value, set.toBlob());
}

void update(Connection& connection, const Source& source, const Key& key, const QByteArray& set)
{
    const std::string sql =
        std::string("UPDATE ") + source.indexes + " SET ridIndex=? WHERE indexName=? AND value=?";
    Sql::execute(connection, sql.c_str(), set, key.index, key.value);
}

void erase(Connection& connection, const Source& source, const Key& key)
{
    const std::string sql =
        std::string("DELETE FROM ") + source.indexes + " WHERE indexName=? AND value=?";
    Sql::execute(connection, sql.c_str(), key.index, key.value);
}

void addSet(Connection& connection, const Source& source, const Key& key, const RowIdSet& ids)
{
    const std::optional<QByteArray> stored = load(connection, source, key);
    if (!stored) {
        insert(connection, source, key, ids);
        return;
    }
    const std::optional<QByteArray> united = RowIdBlob::united(*stored, ids);
    if (!united) {
        raiseNoSet(source, key);
    }
    if (*united != *stored) {
        update(connection, source, key, *united);
    }
}

void removeSet(Connection& connection, const Source& source, const Key& key, const RowIdSet& ids)
{
    const std::optional<QByteArray> stored = load(connection, source, key);
    if (!stored) {
        return;
    }
    const std::optional<QByteArray> left = RowIdBlob::without(*stored, ids);
    if (!left) {
        raiseNoSet(source, key);
    }
    if (RowIdBlob::isEmpty(*left)) {
        erase(connection, source, key);
    } else if (*left != *stored) {
        update(connection, source, key, *left);
    }
}

/// The ids of the first set that are not in the second.
RowIdSet difference(RowIdSet set, const RowIdSet& other)
{
    set.subtract(other);
    return set;
}

/// Which albums of the user lie below a folder. The application keeps this for some folders only;
/// those sets are kept, others are not begun.
Sets albumClosures(Connection& connection)
{
    Sets sets;
    const QStringList folders = Sql::texts(
        connection, "SELECT value FROM RKFolder_RidIndexes WHERE indexName='manAlbumIdClosure'");
    for (const QString& folder : folders) {
        sets[{u"manAlbumIdClosure"_s, folder}] = RowIdSet(Sql::integers(
            connection,
            "SELECT a.modelId FROM RKAlbum a JOIN RKFolder f ON f.uuid=a.folderUuid "
            "JOIN RKFolder r ON r.modelId=CAST(?1 AS INTEGER) WHERE a.albumSubclass=3 "
            "AND substr(f.folderPath,1,length(r.folderPath))=r.folderPath",
            folder));
    }
    return sets;
}

Sets wantedSets(Connection& connection, const Source& source)
{
    Sets sets = ofTable(connection, source);
    if (&source == &sourceOf("RKFolder")) {
        sets.insert(albumClosures(connection));
    }
    return sets;
}

bool mayHoldMore(const Source& source, const Key& key)
{
    return key.index == "manAlbumIdClosure"_L1 || key.index == "folderIdClosure"_L1 ||
           key.index == "propertyKey"_L1 || std::string_view(source.table).ends_with("Property");
}

/// A stored set that says otherwise than the tables.
struct Mismatch {
    Key key;
    QLatin1StringView what;
    RowIdSet right; ///< what it should hold; empty where there should be none
};

QString describe(const Source& source, const Mismatch& mismatch)
{
    return u"In %1 the set of rows whose %2 is \"%3\" %4."_s.arg(
        QLatin1StringView(source.indexes), mismatch.key.index, mismatch.key.value, mismatch.what);
}

QList<Mismatch> compare(Connection& connection, const Source& source)
{
    // Rows and their sets are of one moment, however much is written meanwhile.
    const Connection::Snapshot snapshot(connection);
    QList<Mismatch> found;
    Sets wanted = wantedSets(connection, source);
    QSet<QString> known;
    for (auto set = wanted.cbegin(); set != wanted.cend(); ++set) {
        known.insert(set.key().index);
    }
    const std::string sql = std::string("SELECT indexName,value,ridIndex FROM ") + source.indexes;
    Sql::Query query(connection, sql.c_str());
    while (query.next()) {
        const Key key{Sql::text(query.column(0)), Sql::text(query.column(1))};
        std::optional<RowIdSet> stored = RowIdSet::fromBlob(Sql::blob(query.column(2)));
        const RowIdSet want = wanted.take(key);
        if (!stored) {
            found.append({key, "cannot be read"_L1, want});
        } else if (!known.contains(key.index)) {
            continue;
        } else if (!stored->containsAll(want)) {
            if (mayHoldMore(source, key)) {
                stored->unite(want);
            }
            found.append({key, "lacks rows"_L1, mayHoldMore(source, key) ? *stored : want});
        } else if (!mayHoldMore(source, key) && *stored != want) {
            found.append({key, "holds rows that have another value"_L1, want});
        }
    }
    for (auto set = wanted.cbegin(); set != wanted.cend(); ++set) {
        if (!set->isEmpty()) {
            found.append({set.key(), "is missing"_L1, *set});
        }
    }
    return found;
}

} // namespace

void RowIdIndexes::add(Writer& writer,
                       const char* table,
                       const QString& index,
                       const QVariant& value,
                       const QList<qint64>& ids)
{
    if (!ids.isEmpty()) {
        addSet(writer.connection, sourceOf(table), {index, valueText(value)}, RowIdSet(ids));
    }
}

void RowIdIndexes::remove(Writer& writer,
                          const char* table,
                          const QString& index,
                          const QVariant& value,
                          const QList<qint64>& ids)
{
    removeSet(writer.connection, sourceOf(table), {index, valueText(value)}, RowIdSet(ids));
}

void RowIdIndexes::addRows(Writer& writer, const char* table, const QList<qint64>& modelIds)
{
    const Source& source = sourceOf(table);
    const Sets sets = ofRows(writer.connection, source, modelIds);
    for (auto set = sets.cbegin(); set != sets.cend(); ++set) {
        addSet(writer.connection, source, set.key(), *set);
    }
}

void RowIdIndexes::removeRows(Writer& writer, const char* table, const QList<qint64>& modelIds)
{
    const Source& source = sourceOf(table);
    const Sets sets = ofRows(writer.connection, source, modelIds);
    for (auto set = sets.cbegin(); set != sets.cend(); ++set) {
        removeSet(writer.connection, source, set.key(), *set);
    }
}

void RowIdIndexes::follow(Writer& writer,
                          const char* table,
                          const QList<qint64>& modelIds,
                          const std::function<void()>& change)
{
    const Source& source = sourceOf(table);
    const Sets before = ofRows(writer.connection, source, modelIds);
    change();
    const Sets after = ofRows(writer.connection, source, modelIds);
    for (auto set = before.cbegin(); set != before.cend(); ++set) {
        if (const RowIdSet left = difference(*set, after.value(set.key())); !left.isEmpty()) {
            removeSet(writer.connection, source, set.key(), left);
        }
    }
    for (auto set = after.cbegin(); set != after.cend(); ++set) {
        if (const RowIdSet joined = difference(*set, before.value(set.key())); !joined.isEmpty()) {
            addSet(writer.connection, source, set.key(), joined);
        }
    }
}

void RowIdIndexes::recomputeAll(Writer& writer)
{
    for (const Source& source : sources()) {
        const Sets sets = wantedSets(writer.connection, source);
        const std::string sql = std::string("DELETE FROM ") + source.indexes + " WHERE indexName=?";
        QSet<QString> cleared; // indexes of other kinds stay as they are
        for (auto set = sets.cbegin(); set != sets.cend(); ++set) {
            if (!cleared.contains(set.key().index)) {
                cleared.insert(set.key().index);
                Sql::execute(writer.connection, sql.c_str(), set.key().index);
            }
        }
        for (auto set = sets.cbegin(); set != sets.cend(); ++set) {
            insert(writer.connection, source, set.key(), *set);
        }
    }
}

QStringList RowIdIndexes::mismatches(Connection& connection)
{
    QStringList lines;
    for (const Source& source : sources()) {
        lines += mismatches(connection, source);
    }
    return lines;
}

QStringList RowIdIndexes::mismatches(Connection& connection, const Source& source)
{
    QStringList lines;
    for (const Mismatch& mismatch : compare(connection, source)) {
        lines.append(describe(source, mismatch));
    }
    return lines;
}

void RowIdIndexes::mend(Writer& writer)
{
    for (const Source& source : sources()) {
        for (const Mismatch& mismatch : compare(writer.connection, source)) {
            erase(writer.connection, source, mismatch.key);
            if (!mismatch.right.isEmpty()) {
                insert(writer.connection, source, mismatch.key, mismatch.right);
            }
        }
    }
}
