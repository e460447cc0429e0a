#include "DerivedRows.h"

#include "AlbumRows.h"
#include "EventRows.h"
#include "ModelIds.h"
#include "Queries.h"
#include "RowIdIndexes.h"
#include "RowQuestions.h"
#include "Schema.h"

#include <string>

using namespace Qt::StringLiterals;

namespace
{

const QString kDatabase = Schema::filePath(Schema::Database::Library);

/// Events whose first or last date is neither that of the photos that are shown nor that of all
/// that are not in the trash; to the second. The signs keep SQLite to the index of the event.
constexpr const char* kWrongDates =
    "SELECT f.uuid FROM RKFolder f JOIN (SELECT projectUuid,"
    " min(CASE WHEN isHidden = 0 THEN imageDate END) AS first,"
    " max(CASE WHEN isHidden = 0 THEN imageDate END) AS last,"
    " min(imageDate) AS firstOfAll, max(imageDate) AS lastOfAll"
    " FROM RKVersion WHERE showInLibrary = 1 AND isInTrash = 0 GROUP BY projectUuid) p"
    " ON p.projectUuid = f.uuid WHERE f.folderType = 2 AND f.isMagic = 0 AND p.first IS NOT NULL"
    " AND NOT coalesce(abs(f.minImageDate - p.first) <= 1 AND abs(f.maxImageDate - p.last) <= 1, 0)"
    " AND NOT coalesce(abs(f.minImageDate - p.firstOfAll) <= 1"
    " AND abs(f.maxImageDate - p.lastOfAll) <= 1, 0) ORDER BY f.modelId";

/// Events with photos to show whose key photo is in the trash, elsewhere, or gone.
constexpr const char* kWrongPosters =
    "SELECT f.uuid FROM RKFolder f WHERE f.folderType = 2 AND f.isMagic = 0"
    " AND f.posterVersionUuid IS NOT NULL AND NOT EXISTS (SELECT 1 FROM RKVersion v"
    " WHERE v.uuid = f.posterVersionUuid AND +v.projectUuid = f.uuid AND +v.isInTrash = 0)"
    " AND EXISTS (SELECT 1 FROM RKVersion v WHERE v.projectUuid = f.uuid AND +v.showInLibrary = 1"
    " AND +v.isInTrash = 0 AND +v.isHidden = 0) ORDER BY f.modelId";

constexpr const char* kWronglyTrashed =
    "SELECT f.uuid FROM RKFolder f WHERE f.folderType = 2 AND f.isMagic = 0 AND f.isInTrash <> 0"
    " AND EXISTS (SELECT 1 FROM RKVersion v WHERE v.projectUuid = f.uuid AND +v.showInLibrary = 1"
    " AND +v.isInTrash = 0) ORDER BY f.modelId";

QString titleOf(Connection& connection, const QString& event)
{
    const QString name =
        Sql::firstText(connection, "SELECT name FROM RKFolder WHERE uuid = ?", event);
    return name.isEmpty() ? u"An event without a name"_s : u"The event “%1”"_s.arg(name);
}

void tell(Connection& connection, const char* sql, const QString& what, QList<Finding>& findings)
{
    const QStringList events = Sql::texts(connection, sql);
    for (const QString& event : events) {
        findings.append({titleOf(connection, event) + u' ' + what, kDatabase, true});
    }
}

/// Of the versions and masters that change, the sidecars follow.
void noteMasters(Writer& writer, const char* sql)
{
    const QStringList masters = Sql::texts(writer.connection, sql);
    writer.changes.masters.unite(QSet<QString>(masters.begin(), masters.end()));
}

void mendVersions(Writer& writer)
{
    noteMasters(writer,
                "SELECT v.masterUuid FROM RKVersion v WHERE (v.hasKeywords <> 0) <> EXISTS"
                " (SELECT 1 FROM RKKeywordForVersion k WHERE k.versionId = v.modelId)");
    Sql::execute(writer.connection,
                 "UPDATE RKVersion SET hasKeywords = EXISTS (SELECT 1 FROM RKKeywordForVersion k"
                 " WHERE k.versionId = RKVersion.modelId) WHERE (hasKeywords <> 0) <> EXISTS"
                 " (SELECT 1 FROM RKKeywordForVersion k WHERE k.versionId = RKVersion.modelId)");
    Sql::execute(writer.connection,
                 "UPDATE RKVersion SET masterId = (SELECT m.modelId FROM RKMaster m"
                 " WHERE m.uuid = RKVersion.masterUuid) WHERE EXISTS (SELECT 1 FROM RKMaster m"
                 " WHERE m.uuid = RKVersion.masterUuid AND m.modelId IS NOT RKVersion.masterId)");
    Sql::execute(writer.connection,
                 "UPDATE RKImageProxyState SET versionId = (SELECT v.modelId FROM RKVersion v"
                 " WHERE v.uuid = RKImageProxyState.versionUuid) WHERE EXISTS (SELECT 1"
                 " FROM RKVersion v WHERE v.uuid = RKImageProxyState.versionUuid"
                 " AND v.modelId IS NOT RKImageProxyState.versionId)");
}

void mendStatistics(Writer& writer)
{
    const std::string miscounted = RowQuestions::column("uuid", RowQuestions::kMiscountedEvents);
    QStringList events;
    for (const char* sql : {miscounted.c_str(), kWrongDates, kWrongPosters, kWronglyTrashed}) {
        events << Sql::texts(writer.connection, sql);
    }
    events.removeDuplicates();
    for (const QString& event : std::as_const(events)) {
        EventRows::updateStatistics(writer, event);
    }
    const QList<qint64> albums =
        Sql::integers(writer.connection,
                      RowQuestions::column("modelId", RowQuestions::kMiscountedAlbums).c_str());
    for (const qint64 album : albums) {
        AlbumRows::updateCount(writer, album);
    }
}

} // namespace

QList<Finding> DerivedRows::findings(Connection& connection)
{
    QList<Finding> findings;
    tell(connection, kWrongDates, u"has a wrong first or last date."_s, findings);
    tell(connection, kWrongPosters, u"has a key photo that is none of its photos."_s, findings);
    tell(connection, kWronglyTrashed, u"is in the trash with photos that are not."_s, findings);
    const QList<ModelIds::Lagging> tables = ModelIds::lagging(connection);
    for (const ModelIds::Lagging& lagging : tables) {
        if (lagging.setLacksIds) {
            findings.append(
                {u"The set of all ids of %1 lacks some that are in use, or cannot be read."_s.arg(
                     lagging.table),
                 kDatabase,
                 true});
        }
        if (lagging.counter && !lagging.isOfObjects) {
            findings.append({ModelIds::describeCounter(lagging), kDatabase, true});
        }
    }
    return findings;
}

void DerivedRows::mend(Writer& writer)
{
    mendVersions(writer);
    mendStatistics(writer);
    if (Schema::mismatches(writer.connection).isEmpty()) {
        RowIdIndexes::mend(writer);
    }
}
