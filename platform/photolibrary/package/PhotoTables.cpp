#include "PhotoTables.h"

#include "ColumnValues.h"
#include "Queries.h"
#include "RegularAlbums.h"
#include "RowQuestions.h"

#include <QList>

using namespace Qt::StringLiterals;
using namespace ColumnValues;

namespace
{

constexpr const char* kMasters =
    "SELECT uuid, fileName, imagePath, fileIsReference, isTrulyRaw, type,"
    " originalVersionUuid, fileVolumeUuid FROM RKMaster";

/// Most were imported upright, so only the others are kept.
constexpr const char* kRotationsAsImported =
    "SELECT uuid, rotation FROM RKVersion WHERE versionNumber = 0 AND rotation IS NOT 0";

constexpr const char* kEvents = "SELECT uuid, modelId, name, minImageDate FROM RKFolder";

constexpr const char* kProxies =
    "SELECT versionUuid, fullSizePreviewPath, miniThumbnailPath FROM prox.RKImageProxyState";

constexpr const char* kComments = "SELECT i.versionId, s.stringProperty FROM prop.RKIptcProperty i"
                                  " JOIN prop.RKUniqueString s ON s.modelId = i.stringId"
                                  " WHERE i.propertyKey = 'Caption/Abstract'";

constexpr const char* kAltitudes = "SELECT versionId, numberProperty FROM prop.RKExifNumberProperty"
                                   " WHERE propertyKey = 'Altitude'";

/// Looked up here: SQLite's joining and ordering of all rows takes several times as long, and each
/// photo would have a copy of the name.
NamesByPhoto
namesByPhoto(Connection& connection, const char* pairs, const QHash<qint64, QString>& names)
{
    NamesByPhoto found;
    for (Sql::Query query(connection, pairs); query.next();) {
        const auto name = names.constFind(query.column(1).getInt64());
        if (name != names.cend()) {
            found[query.column(0).getInt64()].append(*name);
        }
    }
    return found;
}

NamesByPhoto keywordsByPhoto(Connection& connection)
{
    QHash<qint64, QString> names;
    for (Sql::Query query(connection, "SELECT modelId, name FROM RKKeyword"); query.next();) {
        names.insert(query.column(0).getInt64(), Sql::text(query.column(1)));
    }
    return namesByPhoto(connection, "SELECT versionId, keywordId FROM RKKeywordForVersion", names);
}

NamesByPhoto albumsByPhoto(Connection& connection)
{
    const QList<qint64> ids = RegularAlbums::ids(connection);
    const QSet<qint64> regular(ids.begin(), ids.end());
    QHash<qint64, QString> names;
    for (Sql::Query query(connection, "SELECT modelId, name FROM RKAlbum"); query.next();) {
        if (const qint64 id = query.column(0).getInt64(); regular.contains(id)) {
            names.insert(id, Sql::text(query.column(1)));
        }
    }
    return namesByPhoto(connection, "SELECT versionId, albumId FROM RKAlbumVersion", names);
}

void readMasters(Connection& connection, PhotoTables& tables)
{
    Sql::Query query(connection, kMasters);
    while (query.next()) {
        tables.masters.insert(textOrNothing(query.column(0)),
                              {textOrNothing(query.column(1)),
                               textOrNothing(query.column(2)),
                               query.column(3).getInt() != 0,
                               query.column(4).getInt() != 0,
                               textOrNothing(query.column(5)) == "VIDT"_L1,
                               textOrNothing(query.column(6)),
                               textOrNothing(query.column(7))});
    }
}

void readEventsAndProxies(Connection& connection, PhotoTables& tables)
{
    Sql::Query events(connection, kEvents);
    while (events.next()) {
        tables.events.insert(textOrNothing(events.column(0)),
                             {static_cast<qint64>(events.column(1).getInt64()),
                              textOrNothing(events.column(2)),
                              realOrNothing(events.column(3))});
    }
    Sql::Query proxies(connection, kProxies);
    while (proxies.next()) {
        tables.proxies.insert(textOrNothing(proxies.column(0)),
                              {!proxies.column(1).isNull(),
                               textOrNothing(proxies.column(1)),
                               textOrNothing(proxies.column(2))});
    }
}

void readProperties(Connection& connection, PhotoTables& tables)
{
    Sql::Query rotations(connection, kRotationsAsImported);
    while (rotations.next()) {
        tables.rotationsAsImported.insert(textOrNothing(rotations.column(0)),
                                          realOrNothing(rotations.column(1)));
    }
    Sql::Query comments(connection, kComments);
    while (comments.next()) {
        tables.comments.insert(comments.column(0).getInt64(), textOrNothing(comments.column(1)));
    }
    Sql::Query altitudes(connection, kAltitudes);
    while (altitudes.next()) {
        if (const std::optional<double> altitude = realOrNothing(altitudes.column(1))) {
            tables.altitudes.insert(altitudes.column(0).getInt64(), *altitude);
        }
    }
}

} // namespace

PhotoTables PhotoTables::read(Connection& connection)
{
    PhotoTables tables;
    const auto masters = static_cast<qsizetype>(
        Sql::firstInteger(connection, "SELECT count(*) FROM RKMaster").value_or(0));
    tables.masters.reserve(masters);
    tables.proxies.reserve(masters);
    readMasters(connection, tables);
    readEventsAndProxies(connection, tables);
    readProperties(connection, tables);
    tables.keywords = keywordsByPhoto(connection);
    const QList<qint64> losers = Sql::integers(
        connection, RowQuestions::column("versionId", RowQuestions::kLostKeywords).c_str());
    tables.keywordLosers = {losers.cbegin(), losers.cend()};
    tables.albums = albumsByPhoto(connection);
    tables.volumes = Volumes::all(connection);
    return tables;
}
