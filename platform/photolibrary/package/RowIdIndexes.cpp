#include "RowIdIndexes.h"

#include "Queries.h"
#include "RowIdSet.h"

#include <QMap>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

using namespace Qt::StringLiterals;

namespace
{

/// One indexed table: the first column of the rows is the id that is kept, the others are indexed
/// under their names.
struct Source {
    const char* table;
    const char* indexes;
    const char* rows;
};

constexpr std::array kSources{
    Source{"RKVersion",
           "RKVersion_RidIndexes",
           "SELECT modelId,hasKeywords,projectUuid,isFlagged,isHidden,showInLibrary,hasNotes,"
           "isOriginal,faceDetectionIsFromPreview,isInTrash,mainRating FROM RKVersion"},
    Source{"RKMaster",
           "RKMaster_RidIndexes",
           "SELECT modelId,projectUuid,imageFormat,hasFocusPoints,subtype,isTrulyRaw,"
           "streamSourceUuid,hasNotes,fileVolumeUuid,type,burstUuid,fileIsReference,isMissing,"
           "streamAssetId,hasAttachments,isExternallyEditable,faceDetectionState,isInTrash "
           "FROM RKMaster"},
    Source{"RKAlbum",
           "RKAlbum_RidIndexes",
           "SELECT modelId,albumSubclass,albumType,isInTrash,serviceName,isFavorite,isHidden "
           "FROM RKAlbum"},
    Source{"RKFolder", "RKFolder_RidIndexes", "SELECT modelId,folderType,folderPath FROM RKFolder"},
    Source{"RKAlbumVersion",
           "RKAlbumVersion_RidIndexes",
           "SELECT versionId,albumId FROM RKAlbumVersion"},
    Source{"RKImageProxyState",
           "RKImageProxyState_RidIndexes",
           "SELECT versionId,previewRendered,thumbnailRendered,thumbnailsCurrent,"
           "miniThumbnailsCurrent,tinyThumbnailsCurrent,fullSizePreviewUpToDate "
           "FROM RKImageProxyState"},
    Source{"RKIptcProperty",
           "RKIptc_RidIndexes",
           "SELECT searchStringId,propertyKey FROM RKIptcProperty"},
    Source{"RKOtherProperty",
           "RKOther_RidIndexes",
           "SELECT searchStringId,propertyKey FROM RKOtherProperty"},
    Source{"RKExifStringProperty",
           "RKExif_RidIndexes",
           "SELECT searchStringId,propertyKey FROM RKExifStringProperty"},
};

const Source& sourceOf(const char* table)
{
    const auto* const source = std::ranges::find_if(kSources, [table](const Source& candidate) {
        return std::string_view(candidate.table) == table;
    });
    Q_ASSERT_X(source != kSources.end(), "RowIdIndexes", "table without indexes");
    return *source;
}

struct Key {
    QString index;
    QString value;
    friend bool operator==(const Key&, const Key&) = default;

    friend bool operator<(const Key& left, const Key& right)
    {
        return std::tie(left.index, left.value) < std::tie(right.index, right.value);
    }
};

using Sets = QMap<Key, RowIdSet>;

QString valueText(const QVariant& value)
{
    if (value.isNull()) {
        return u"<*null*>"_s;
    }
    return value.typeId() == QMetaType::Bool ? QString::number(value.toInt()) : value.toString();
}

/// Ratings are indexed as "at least"; only of what the user sees and rates.
void addRating(Sets& sets, qint64 id, const QVariant& rating, bool isOriginal)
{
    if (isOriginal) {
        return;
    }
    sets[{u"mainRating"_s, u"all"_s}].insert(id);
    sets[{u"blankMasterVersions"_s, u"0"_s}].insert(id);
    if (rating.isNull()) {
        return;
    }
    for (int least = 0; least < 5 && rating.toInt() >= least; ++least) {
        sets[{u"mainRating"_s, u">=%1"_s.arg(least)}].insert(id);
    }
    if (rating.toInt() == 5) {
        sets[{u"mainRating"_s, u"=5"_s}].insert(id);
    }
}

/// A folder belongs to the closure of itself and of each folder above it; its path names them all.
void addClosures(Sets& sets, qint64 id, const QString& folderPath)
{
    const QStringList above = folderPath.split('/'_L1, Qt::SkipEmptyParts);
    for (const QString& folder : above) {
        sets[{u"folderIdClosure"_s, folder}].insert(id);
    }
}

/// Adds the current row of the query to the sets that it belongs to.
void collectRow(SQLite::Statement& row, Sets& sets)
{
    if (row.getColumn(0).isNull()) {
        return; // a property that is a number has no string
    }
    const auto id = static_cast<qint64>(row.getColumn(0).getInt64());
    std::optional<bool> isOriginal;
    for (int i = 1; i < row.getColumnCount(); ++i) {
        const QString name = QString::fromLatin1(row.getColumn(i).getName());
        const QVariant value = Sql::value(row.getColumn(i));
        if (name == "mainRating"_L1) {
            addRating(sets, id, value, isOriginal.value_or(false));
            continue;
        }
        if (name == "folderPath"_L1) {
            addClosures(sets, id, value.toString());
            continue;
        }
        if (name == "isOriginal"_L1) {
            isOriginal = value.toInt() != 0;
        }
        sets[{name, valueText(value)}].insert(id);
    }
}

Sets collect(Connection& connection, const Source& source)
{
    Sets sets;
    SQLite::Statement& rows = connection.statement(source.rows);
    while (rows.executeStep()) {
        collectRow(rows, sets);
    }
    rows.tryReset();
    return sets;
}

Sets collectRows(Connection& connection, const Source& source, const QList<qint64>& modelIds)
{
    Sets sets;
    const std::string sql = std::string(source.rows) + " WHERE modelId=?";
    for (const qint64 modelId : modelIds) {
        SQLite::Statement& row = connection.statement(sql.c_str());
        Sql::bind(row, 1, modelId);
        if (row.executeStep()) {
            collectRow(row, sets);
        }
        row.tryReset();
    }
    return sets;
}

RowIdSet decoded(const QByteArray& blob, const Source& source, const Key& key)
{
    std::optional<RowIdSet> set = RowIdSet::fromBlob(blob);
    if (!set) {
        const QString what = u"index %1/%2/%3 holds no set of rows"_s.arg(
            QLatin1StringView(source.indexes), key.index, key.value);
        throw SQLite::Exception(what.toStdString(), SQLITE_CORRUPT);
    }
    return *set;
}

std::optional<RowIdSet> load(Connection& connection, const Source& source, const Key& key)
{
    const std::string sql =
        std::string("SELECT ridIndex FROM ") + source.indexes + " WHERE indexName=? AND value=?";
    Sql::Query query(connection, sql.c_str(), key.index, key.value);
    if (!query.next()) {
        return std::nullopt;
    }
    return decoded(Sql::blob(query.column(0)), source, key);
}

void insert(Connection& connection, const Source& source, const Key& key, const RowIdSet& set)
{
    const std::string sql =
        std::string("INSERT INTO ") + source.indexes + "(indexName,value,ridIndex) VALUES(?,?,?)";
    Sql::execute(connection, sql.c_str(), key.index, key.value, set.toBlob());
}

void update(Connection& connection, const Source& source, const Key& key, const RowIdSet& set)
{
    const std::string sql =
        std::string("UPDATE ") + source.indexes + " SET ridIndex=? WHERE indexName=? AND value=?";
    Sql::execute(connection, sql.c_str(), set.toBlob(), key.index, key.value);
}

void erase(Connection& connection, const Source& source, const Key& key)
{
    const std::string sql =
        std::string("DELETE FROM ") + source.indexes + " WHERE indexName=? AND value=?";
    Sql::execute(connection, sql.c_str(), key.index, key.value);
}

void addSet(Connection& connection, const Source& source, const Key& key, const RowIdSet& ids)
{
    std::optional<RowIdSet> set = load(connection, source, key);
    if (!set) {
        insert(connection, source, key, ids);
    } else if (!set->containsAll(ids)) {
        set->unite(ids);
        update(connection, source, key, *set);
    }
}

void removeSet(Connection& connection, const Source& source, const Key& key, const RowIdSet& ids)
{
    std::optional<RowIdSet> set = load(connection, source, key);
    if (!set) {
        return;
    }
    const RowIdSet before = *set;
    for (const qint64 id : ids.ids()) {
        set->remove(id);
    }
    if (set->isEmpty()) {
        erase(connection, source, key);
    } else if (*set != before) {
        update(connection, source, key, *set);
    }
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
    Sets sets = collect(connection, source);
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
    const Sets sets = collectRows(writer.connection, source, modelIds);
    for (auto set = sets.cbegin(); set != sets.cend(); ++set) {
        addSet(writer.connection, source, set.key(), *set);
    }
}

void RowIdIndexes::removeRows(Writer& writer, const char* table, const QList<qint64>& modelIds)
{
    const Source& source = sourceOf(table);
    const Sets sets = collectRows(writer.connection, source, modelIds);
    for (auto set = sets.cbegin(); set != sets.cend(); ++set) {
        removeSet(writer.connection, source, set.key(), *set);
    }
}

void RowIdIndexes::recomputeAll(Writer& writer)
{
    for (const Source& source : kSources) {
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
    for (const Source& source : kSources) {
        for (const Mismatch& mismatch : compare(connection, source)) {
            lines.append(describe(source, mismatch));
        }
    }
    return lines;
}

void RowIdIndexes::mend(Writer& writer)
{
    for (const Source& source : kSources) {
        for (const Mismatch& mismatch : compare(writer.connection, source)) {
            erase(writer.connection, source, mismatch.key);
            if (!mismatch.right.isEmpty()) {
                insert(writer.connection, source, mismatch.key, mismatch.right);
            }
        }
    }
}
