#include "AlbumRows.h"

#include "KeyedArchive.h"
#include "ModelIds.h"
#include "Queries.h"
#include "RowIdIndexes.h"
#include "Uuid.h"

using namespace Qt::StringLiterals;

namespace
{

/// The sidebar's spacing of order numbers.
constexpr qint64 kOrderStep = 256;
constexpr auto kTopLevel = "TopLevelAlbums"_L1;
constexpr auto kLastImport = "lastImportAlbum"_L1;

/// The filter that hides nothing but rejected photos; all albums of the user have the same.
QByteArray commonFilter(Connection& connection)
{
    Sql::Query query(connection, "SELECT filterData FROM RKAlbum WHERE uuid='lastImportAlbum'");
    return query.next() ? Sql::blob(query.column(0)) : QByteArray();
}

/// How an album looks when it is first opened, with the application's own song for slideshows.
QByteArray freshView()
{
    const QVariantMap attributes{
        {u"Song_Title"_s, u"Minuet in G"_s},
        {u"Song_Path"_s, u"/Applications/iPhoto.app/Contents/Resources/Music/Minuet in G.mp3"_s}};
    const QVariantMap album{{u"attributes"_s, attributes},
                            {u"className"_s, u"Album"_s},
                            {u"group"_s, 8192},
                            {u"iPhotoCreated"_s, true},
                            {u"iconImageName"_s, u"sl-icon-small_album"_s},
                            {u"largeIconImageName"_s, u"sl-icon_album"_s},
                            {u"lastScrollFloat"_s, 0.0},
                            {u"lastScrollLong"_s, -1}};
    return KeyedArchive::encode(
        QVariantMap{{u"IPAlbum"_s, album}},
        {u"HgLockedDictionary"_s, u"NSMutableDictionary"_s, u"NSDictionary"_s, u"NSObject"_s});
}

QByteArray commonView(Connection& connection)
{
    Sql::Query query(connection,
                     "SELECT viewData FROM RKAlbum WHERE folderUuid='TopLevelAlbums' AND "
                     "albumSubclass=3 AND viewData IS NOT NULL ORDER BY modelId LIMIT 1");
    return query.next() ? Sql::blob(query.column(0)) : freshView();
}

void appendToSidebar(Writer& writer, const QString& uuid)
{
    const qint64 last = Sql::firstInteger(writer.connection,
                                          "SELECT max(orderNumber) FROM RKCustomSortOrder WHERE "
                                          "purpose='default' AND containerUuid='TopLevelAlbums'")
                            .value_or(0);
    const qint64 id = ModelIds::allocate(writer, "RKCustomSortOrder");
    Sql::execute(writer.connection,
                 "INSERT INTO RKCustomSortOrder(modelId,containerUuid,purpose,objectUuid,"
                 "orderNumber) VALUES(?,'TopLevelAlbums','default',?,?)",
                 id,
                 uuid,
                 last + kOrderStep);
    writer.changes.folders.insert(kTopLevel);
}

/// Follows a new album in those closures of the folders above it that the library keeps.
void addToClosures(Writer& writer, qint64 album)
{
    const QString path = Sql::firstText(
        writer.connection, "SELECT folderPath FROM RKFolder WHERE uuid=?", kTopLevel);
    const QStringList folders = path.split('/'_L1, Qt::SkipEmptyParts);
    for (const QString& folder : folders) {
        const bool isKept = Sql::firstInteger(writer.connection,
                                              "SELECT 1 FROM RKFolder_RidIndexes WHERE "
                                              "indexName='manAlbumIdClosure' AND value=?",
                                              folder)
                                .has_value();
        if (isKept) {
            RowIdIndexes::add(writer, "RKFolder", u"manAlbumIdClosure"_s, folder, {album});
        }
    }
}

std::optional<QString> regularAlbum(Writer& writer, qint64 album)
{
    const QString uuid = Sql::firstText(
        writer.connection, "SELECT uuid FROM RKAlbum WHERE modelId=? AND albumSubclass=3", album);
    return uuid.isNull() ? std::nullopt : std::optional(uuid);
}

void membersChanged(Writer& writer, qint64 album)
{
    AlbumRows::updateCount(writer, album);
    Sql::execute(writer.connection,
                 "UPDATE RKAlbum SET recentUserChangeDate=? WHERE modelId=?",
                 writer.now,
                 album);
}

bool canJoin(Writer& writer, qint64 album, qint64 versionId)
{
    const bool exists =
        Sql::firstInteger(writer.connection,
                          "SELECT modelId FROM RKVersion WHERE modelId=? AND showInLibrary=1",
                          versionId)
            .has_value();
    return exists &&
           !Sql::firstInteger(writer.connection,
                              "SELECT modelId FROM RKAlbumVersion WHERE albumId=? AND versionId=?",
                              album,
                              versionId)
                .has_value();
}

} // namespace

qint64 AlbumRows::createAlbum(Writer& writer, const QString& name)
{
    const qint64 id = ModelIds::allocate(writer, "RKAlbum");
    const QString uuid = Uuid::create();
    Sql::execute(
        writer.connection,
        "INSERT INTO RKAlbum(modelId,uuid,albumType,albumSubclass,name,folderUuid,sortKeyPath,"
        "sortAscending,customSortAvailable,versionCount,createDate,isFavorite,isInTrash,isHidden,"
        "isMagic,publishSyncNeeded,colorLabelIndex,recentUserChangeDate,filterData,viewData) "
        "VALUES(?1,?2,1,3,?3,'TopLevelAlbums','exifProperties.ImageDate',1,0,0,?4,0,0,0,0,0,-1,?4,"
        "?5,?6)",
        id,
        uuid,
        name,
        writer.now,
        commonFilter(writer.connection),
        commonView(writer.connection));
    RowIdIndexes::addRows(writer, "RKAlbum", {id});
    addToClosures(writer, id);
    appendToSidebar(writer, uuid);
    writer.changes.albums.insert(uuid);
    writer.changes.catalogues = true;
    return id;
}

QString
AlbumRows::createImplicitAlbum(Writer& writer, const QString& name, const QString& folderUuid)
{
    const qint64 id = ModelIds::allocate(writer, "RKAlbum");
    QString uuid = Uuid::create();
    Sql::execute(
        writer.connection,
        "INSERT INTO RKAlbum(modelId,uuid,albumType,albumSubclass,name,folderUuid,sortKeyPath,"
        "sortAscending,customSortAvailable,createDate,isFavorite,isInTrash,isHidden,isMagic,"
        "publishSyncNeeded,colorLabelIndex,recentUserChangeDate,filterData) "
        "VALUES(?1,?2,1,1,?3,?4,'exifProperties.ImageDate',1,0,?5,0,0,0,0,0,-1,?5,?6)",
        id,
        uuid,
        name,
        folderUuid,
        writer.now,
        commonFilter(writer.connection));
    RowIdIndexes::addRows(writer, "RKAlbum", {id});
    writer.changes.albums.insert(uuid);
    return uuid;
}

void AlbumRows::addPhotos(Writer& writer, qint64 album, const QList<qint64>& versionIds)
{
    const std::optional<QString> uuid = regularAlbum(writer, album);
    if (!uuid) {
        return;
    }
    for (const qint64 versionId : versionIds) {
        if (!canJoin(writer, album, versionId)) {
            continue;
        }
        const qint64 id = ModelIds::allocate(writer, "RKAlbumVersion");
        Sql::execute(writer.connection,
                     "INSERT INTO RKAlbumVersion(modelId,versionId,albumId) VALUES(?,?,?)",
                     id,
                     versionId,
                     album);
        RowIdIndexes::add(writer, "RKAlbumVersion", u"albumId"_s, album, {versionId});
    }
    membersChanged(writer, album);
    writer.changes.albums.insert(*uuid);
    writer.changes.catalogues = true;
}

void AlbumRows::removePhotos(Writer& writer, qint64 album, const QList<qint64>& versionIds)
{
    const std::optional<QString> uuid = regularAlbum(writer, album);
    if (!uuid) {
        return;
    }
    for (const qint64 versionId : versionIds) {
        Sql::execute(writer.connection,
                     "DELETE FROM RKAlbumVersion WHERE albumId=? AND versionId=?",
                     album,
                     versionId);
    }
    RowIdIndexes::remove(writer, "RKAlbumVersion", u"albumId"_s, album, versionIds);
    membersChanged(writer, album);
    writer.changes.albums.insert(*uuid);
    writer.changes.catalogues = true;
}

void AlbumRows::replaceLastImport(Writer& writer, const QList<qint64>& versionIds)
{
    const std::optional<qint64> album = Sql::firstInteger(
        writer.connection, "SELECT modelId FROM RKAlbum WHERE uuid=?", kLastImport);
    if (!album) {
        return;
    }
    removePhotos(writer,
                 *album,
                 Sql::integers(writer.connection,
                               "SELECT versionId FROM RKAlbumVersion WHERE albumId=?",
                               *album));
    addPhotos(writer, *album, versionIds);
}

void AlbumRows::updateCount(Writer& writer, qint64 album)
{
    Sql::execute(writer.connection,
                 "UPDATE RKAlbum SET versionCount=(SELECT count(*) FROM RKAlbumVersion WHERE "
                 "albumId=?1) WHERE modelId=?1 AND albumSubclass=3",
                 album);
}

void AlbumRows::setInTrash(Writer& writer, qint64 album, bool inTrash)
{
    const QString uuid =
        Sql::firstText(writer.connection, "SELECT uuid FROM RKAlbum WHERE modelId=?", album);
    if (uuid.isNull()) {
        return;
    }
    RowIdIndexes::follow(writer, "RKAlbum", {album}, [&] {
        Sql::execute(writer.connection,
                     "UPDATE RKAlbum SET isInTrash=? WHERE modelId=?",
                     inTrash ? 1 : 0,
                     album);
    });
    writer.changes.albums.insert(uuid);
    writer.changes.catalogues = true;
}
