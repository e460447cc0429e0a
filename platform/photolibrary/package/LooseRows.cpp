#include "LooseRows.h"

#include "MastersOfPhoto.h"
#include "ModelIds.h"
#include "Queries.h"
#include "RowQuestions.h"
#include "Schema.h"

#include <string>

using namespace Qt::StringLiterals;

namespace
{

/// Rows of one kind.
struct Loose {
    const char* table{nullptr};
    const char* ids{nullptr};      ///< asks for them
    const char* sentence{nullptr}; ///< %1 is the first id, %2 how many there are
    Schema::Database database{Schema::Database::Library};
    bool isTie{true}; ///< tells of nothing but what is gone
};

constexpr Loose kKinds[] = {
    {"RKMaster",
     MastersOfPhoto::kWithoutPhoto,
     "%2 master(s) have no photo, the first is %1.",
     Schema::Database::Library,
     false},
    {"RKMaster",
     MastersOfPhoto::kWithoutVersion,
     "%2 master(s) have no version, the first is %1.",
     Schema::Database::Library,
     false},
    {"RKVersion",
     "SELECT v.modelId FROM RKVersion v LEFT JOIN RKMaster m ON m.uuid = v.masterUuid"
     " WHERE m.modelId IS NULL",
     "%2 photo version(s) have no master, the first is %1.",
     Schema::Database::Library,
     false},
    {"RKVersion",
     "SELECT v.modelId FROM RKVersion v LEFT JOIN RKFolder f ON f.uuid = v.projectUuid"
     " WHERE f.modelId IS NULL",
     "%2 photo version(s) belong to no event, the first is %1.",
     Schema::Database::Library,
     false},
    {"RKMaster",
     "SELECT m.modelId FROM RKMaster m LEFT JOIN RKImportGroup g ON g.uuid = m.importGroupUuid"
     " WHERE g.modelId IS NULL",
     "%2 master(s) have no import group, the first is %1.",
     Schema::Database::Library,
     false},
    {"RKAlbumVersion",
     "SELECT a.modelId FROM RKAlbumVersion a LEFT JOIN RKVersion v ON v.modelId = a.versionId"
     " LEFT JOIN RKAlbum b ON b.modelId = a.albumId WHERE v.modelId IS NULL OR b.modelId IS NULL",
     "%2 album entry(ies) name a photo or an album that is not there, the first is %1.",
     Schema::Database::Library},
    {"RKKeywordForVersion",
     "SELECT k.modelId FROM RKKeywordForVersion k LEFT JOIN RKVersion v"
     " ON v.modelId = k.versionId WHERE v.modelId IS NULL",
     "%2 assigned keyword(s) name a photo that is not there, the first is %1.",
     Schema::Database::Library},
    {"RKKeywordForVersion",
     RowQuestions::kLostKeywords,
     "%2 assigned keyword(s) of photos are not there, the first is %1.",
     Schema::Database::Library,
     false},
    // Pictures are found by the uuid of their photo: the number alone may be wrong.
    {"RKImageProxyState",
     "SELECT p.modelId FROM RKImageProxyState p LEFT JOIN RKVersion v"
     " ON v.modelId = p.versionId LEFT JOIN RKVersion u ON u.uuid = p.versionUuid"
     " WHERE v.modelId IS NULL AND u.modelId IS NULL",
     "%2 record(s) of pictures belong to no photo, the first is %1.",
     Schema::Database::ImageProxies},
    {"RKIptcProperty",
     "SELECT p.modelId FROM RKIptcProperty p LEFT JOIN RKVersion v"
     " ON v.modelId = p.versionId WHERE v.modelId IS NULL",
     "%2 text(s) belong to no photo, the first is %1.",
     Schema::Database::Properties},
    {"RKOtherProperty",
     "SELECT p.modelId FROM RKOtherProperty p LEFT JOIN RKVersion v"
     " ON v.modelId = p.versionId WHERE v.modelId IS NULL",
     "%2 other text(s) belong to no photo, the first is %1.",
     Schema::Database::Properties},
    {"RKExifStringProperty",
     "SELECT p.modelId FROM RKExifStringProperty p LEFT JOIN RKVersion v"
     " ON v.modelId = p.versionId WHERE v.modelId IS NULL",
     "%2 camera text(s) belong to no photo, the first is %1.",
     Schema::Database::Properties},
    {"RKExifNumberProperty",
     "SELECT p.modelId FROM RKExifNumberProperty p LEFT JOIN RKVersion v"
     " ON v.modelId = p.versionId WHERE v.modelId IS NULL",
     "%2 number(s) belong to no photo, the first is %1.",
     Schema::Database::Properties},
};

/// Where the row of a photo is lost, what seems to tie nothing tells of that photo.
bool mayBeMended(Connection& connection)
{
    return Sql::integers(connection, MastersOfPhoto::kWithoutPhoto).isEmpty();
}

} // namespace

QList<Finding> LooseRows::findings(Connection& connection)
{
    const bool mendable = mayBeMended(connection);
    QList<Finding> findings;
    for (const Loose& kind : kKinds) {
        const QList<qint64> ids = Sql::integers(connection, kind.ids);
        if (!ids.isEmpty()) {
            findings.append({QString::fromLatin1(kind.sentence)
                                 .arg(QString::number(ids.first()), QString::number(ids.size())),
                             Schema::filePath(kind.database),
                             kind.isTie && mendable});
        }
    }
    return findings;
}

void LooseRows::mend(Writer& writer)
{
    if (!mayBeMended(writer.connection)) {
        return;
    }
    for (const Loose& kind : kKinds) {
        const QList<qint64> ids =
            kind.isTie ? Sql::integers(writer.connection, kind.ids) : QList<qint64>();
        if (ids.isEmpty()) {
            continue;
        }
        const std::string sql =
            std::string("DELETE FROM ") + kind.table + " WHERE modelId IN (" + kind.ids + ")";
        Sql::execute(writer.connection, sql.c_str());
        ModelIds::release(writer, kind.table, ids);
    }
}

qsizetype LooseRows::lostKeywords(Connection& connection, qint64 version)
{
    const std::string ofOne =
        std::string(RowQuestions::kLostKeywords).append(" AND k.versionId = ?");
    return Sql::integers(connection, ofOne.c_str(), version).size();
}

bool LooseRows::losesPhoto(Connection& connection, qint64 album)
{
    return Sql::firstInteger(
               connection,
               "SELECT a.modelId FROM RKAlbumVersion a LEFT JOIN RKVersion v"
               " ON v.modelId = a.versionId WHERE a.albumId = ? AND v.modelId IS NULL",
               album)
        .has_value();
}
