#include "ModelIds.h"

#include "AdminData.h"
#include "Queries.h"
#include "RowIdBlob.h"
#include "RowIdSet.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

/// A column by which rows name others by their ids: what is gone may still be named.
struct Reference {
    const char* named;
    const char* table;
    const char* column;
};

constexpr std::array kReferences{Reference{"RKMaster", "RKVersion", "masterId"},
                                 Reference{"RKVersion", "RKAlbumVersion", "versionId"},
                                 Reference{"RKVersion", "RKKeywordForVersion", "versionId"},
                                 Reference{"RKVersion", "RKPlaceForVersion", "versionId"},
                                 Reference{"RKVersion", "RKVersionFaceContent", "versionId"},
                                 Reference{"RKVersion", "RKGroupsForVersions", "versionId"},
                                 Reference{"RKVersion", "RKImageProxyState", "versionId"},
                                 Reference{"RKVersion", "RKIptcProperty", "versionId"},
                                 Reference{"RKVersion", "RKOtherProperty", "versionId"},
                                 Reference{"RKVersion", "RKExifStringProperty", "versionId"},
                                 Reference{"RKVersion", "RKExifNumberProperty", "versionId"},
                                 Reference{"RKVersion", "RKStatistic", "versionId"},
                                 Reference{"RKAlbum", "RKAlbumVersion", "albumId"},
                                 Reference{"RKKeyword", "RKKeywordForVersion", "keywordId"},
                                 Reference{"RKKeyword", "RKKeyword", "parentId"}};

/// A table whose ids are counted and kept.
struct TableOfIds {
    const char* name;
    bool isOfObjects;
};

constexpr std::array kTables{TableOfIds{"RKMaster", true},
                             TableOfIds{"RKVersion", true},
                             TableOfIds{"RKFolder", true},
                             TableOfIds{"RKAlbum", true},
                             TableOfIds{"RKKeyword", true},
                             TableOfIds{"RKImportGroup", true},
                             TableOfIds{"RKImageProxyState", true},
                             TableOfIds{"RKAlbumVersion", false},
                             TableOfIds{"RKKeywordForVersion", false},
                             TableOfIds{"RKCustomSortOrder", false},
                             TableOfIds{"RKUniqueString", false},
                             TableOfIds{"RKIptcProperty", false},
                             TableOfIds{"RKExifStringProperty", false},
                             TableOfIds{"RKExifNumberProperty", false}};

constexpr auto kNextId = "nextModelId"_L1;
constexpr auto kAllIds = "allModelIds"_L1;

RowIdSet idsOfRows(Connection& connection, const char* table)
{
    const std::string sql = std::string("SELECT modelId FROM ") + table;
    return RowIdSet(Sql::integers(connection, sql.c_str()));
}

qint64 highestIn(Connection& connection, const char* table, const char* column)
{
    const std::string sql = std::string("SELECT max(") + column + ") FROM " + table;
    return Sql::firstInteger(connection, sql.c_str()).value_or(0);
}

qint64 highestId(Connection& connection, const char* table)
{
    return highestIn(connection, table, "modelId");
}

/// The highest id of the table's that any row names; older schemas lack some of the columns.
qint64 highestNamed(Connection& connection, const char* table)
{
    qint64 highest = 0;
    for (const Reference& reference : kReferences) {
        const bool isThere = std::strcmp(reference.named, table) == 0 &&
                             Sql::firstInteger(connection,
                                               "SELECT 1 FROM pragma_table_info(?) WHERE name = ?",
                                               QString::fromLatin1(reference.table),
                                               QString::fromLatin1(reference.column))
                                 .has_value();
        if (isThere) {
            highest = std::max(highest, highestIn(connection, reference.table, reference.column));
        }
    }
    return highest;
}

bool setLacksIds(Connection& connection, const char* table)
{
    const QByteArray blob = AdminData::blob(connection, QString::fromLatin1(table), kAllIds);
    if (blob.isNull()) {
        return false; // it is not kept of every table
    }
    const std::optional<RowIdSet> set = RowIdSet::fromBlob(blob);
    return !set || !set->containsAll(idsOfRows(connection, table));
}

/// Changes the set of all ids; where it cannot be read, it is made anew from the rows, as it is a
/// cache.
void writeAllIds(Writer& writer,
                 const char* table,
                 decltype(&RowIdBlob::united) change,
                 const QByteArray& stored,
                 const RowIdSet& ids)
{
    std::optional<QByteArray> changed = change(stored, ids);
    if (!changed) {
        changed = change(idsOfRows(writer.connection, table).toBlob(), ids);
    }
    AdminData::setBlob(writer, QString::fromLatin1(table), kAllIds, changed.value_or(stored));
}

std::optional<ModelIds::Lagging> laggingIn(Connection& connection, const TableOfIds& table)
{
    ModelIds::Lagging found{
        QString::fromLatin1(table.name), table.isOfObjects, std::nullopt, 0, false};
    const QString counter = AdminData::text(connection, found.table, kNextId);
    const qint64 ofRows = highestId(connection, table.name);
    found.highest = std::max(ofRows, highestNamed(connection, table.name));
    // Without a counter allocate() counts from the rows on.
    if (counter.isNull() ? ofRows < found.highest : counter.toLongLong() <= found.highest) {
        found.counter = counter.toLongLong();
    }
    found.setLacksIds = setLacksIds(connection, table.name);
    return found.counter || found.setLacksIds ? std::optional(found) : std::nullopt;
}

} // namespace

qint64 ModelIds::allocate(Writer& writer, const char* table)
{
    const QString area = QString::fromLatin1(table);
    const qint64 highest = highestId(writer.connection, table);
    const qint64 counter = AdminData::text(writer.connection, area, kNextId).toLongLong();
    if (std::max(highest, counter) >= std::numeric_limits<qint64>::max() - 1) {
        throw SQLite::Exception(std::string("no ids are left in ") + table, SQLITE_CORRUPT);
    }
    const qint64 id = std::max({counter, highest + 1, qint64{1}});
    AdminData::setText(writer, area, kNextId, QString::number(id + 1), AdminData::kInteger);
    const QByteArray blob = AdminData::blob(writer.connection, area, kAllIds);
    if (!blob.isNull()) {
        writeAllIds(writer, table, &RowIdBlob::united, blob, RowIdSet({id}));
    }
    return id;
}

void ModelIds::release(Writer& writer, const char* table, const QList<qint64>& ids)
{
    const QString area = QString::fromLatin1(table);
    const QByteArray blob = AdminData::blob(writer.connection, area, kAllIds);
    if (!ids.isEmpty() && !blob.isNull()) {
        writeAllIds(writer, table, &RowIdBlob::without, blob, RowIdSet(ids));
    }
}

QList<ModelIds::Lagging> ModelIds::lagging(Connection& connection)
{
    QList<Lagging> all;
    for (const TableOfIds& table : kTables) {
        if (const std::optional<Lagging> found = laggingIn(connection, table)) {
            all.append(*found);
        }
    }
    return all;
}

QString ModelIds::describeCounter(const Lagging& lagging)
{
    return u"The id counter of %1 stands at %2, though the id %3 is in use."_s.arg(lagging.table)
        .arg(lagging.counter.value_or(0))
        .arg(lagging.highest);
}

void ModelIds::mend(Writer& writer)
{
    for (const TableOfIds& table : kTables) {
        const std::optional<Lagging> found = laggingIn(writer.connection, table);
        if (found && found->counter && found->highest < std::numeric_limits<qint64>::max()) {
            AdminData::setText(writer,
                               found->table,
                               kNextId,
                               QString::number(found->highest + 1),
                               AdminData::kInteger);
        }
        if (found && found->setLacksIds) {
            // Ids that are gone stay in it: the application leaves them there as well.
            const QByteArray blob = AdminData::blob(writer.connection, found->table, kAllIds);
            RowIdSet set = RowIdSet::fromBlob(blob).value_or(RowIdSet());
            set.unite(idsOfRows(writer.connection, table.name));
            AdminData::setBlob(writer, found->table, kAllIds, set.toBlob());
        }
    }
}
