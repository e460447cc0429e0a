#include "AlbumRows.h"
#include "MastersOfPhoto.h"
#include "ModelIds.h"
#include "PhotoFiles.h"
#include "Properties.h"
#include "Queries.h"
#include "RowIdIndexes.h"
#include "TrashRows.h"

using namespace Qt::StringLiterals;

namespace
{

/// Deletes the rows of a table that a statement finds and gives their ids back.
void deleteRows(Writer& writer, const char* table, const char* condition, const QVariant& value)
{
    const std::string where = std::string(" FROM ") + table + " WHERE " + condition;
    const QList<qint64> ids =
        Sql::integers(writer.connection, ("SELECT modelId" + where).c_str(), value);
    if (ids.isEmpty()) {
        return;
    }
    Sql::execute(writer.connection, ("DELETE" + where).c_str(), value);
    ModelIds::release(writer, table, ids);
}

void leaveAlbums(Writer& writer, qint64 versionId)
{
    const QList<qint64> albums =
        Sql::integers(writer.connection,
                      "SELECT DISTINCT albumId FROM RKAlbumVersion WHERE versionId=?",
                      versionId);
    deleteRows(writer, "RKAlbumVersion", "versionId=?", versionId);
    for (const qint64 album : albums) {
        RowIdIndexes::remove(writer, "RKAlbumVersion", u"albumId"_s, album, {versionId});
        AlbumRows::updateCount(writer, album);
        const QString uuid =
            Sql::firstText(writer.connection, "SELECT uuid FROM RKAlbum WHERE modelId=?", album);
        if (!uuid.isNull()) {
            writer.changes.albums.insert(uuid);
        }
    }
}

/// No album and no event may name a key photo that is gone.
void takeOffPosters(Writer& writer, const QString& version)
{
    const QStringList albums = Sql::texts(
        writer.connection, "SELECT uuid FROM RKAlbum WHERE posterVersionUuid=?", version);
    for (const QString& album : albums) {
        Sql::execute(
            writer.connection, "UPDATE RKAlbum SET posterVersionUuid=NULL WHERE uuid=?", album);
        writer.changes.albums.insert(album);
    }
    const QStringList folders = Sql::texts(
        writer.connection, "SELECT uuid FROM RKFolder WHERE posterVersionUuid=?", version);
    for (const QString& folder : folders) {
        Sql::execute(
            writer.connection, "UPDATE RKFolder SET posterVersionUuid=NULL WHERE uuid=?", folder);
        writer.changes.folders.insert(folder);
    }
}

void deleteVersion(Writer& writer, qint64 versionId)
{
    const QString uuid =
        Sql::firstText(writer.connection, "SELECT uuid FROM RKVersion WHERE modelId=?", versionId);
    leaveAlbums(writer, versionId);
    takeOffPosters(writer, uuid);
    deleteRows(writer, "RKKeywordForVersion", "versionId=?", versionId);
    deleteRows(writer, "RKVersionFaceContent", "versionId=?", versionId);
    deleteRows(writer, "RKPlaceForVersion", "versionId=?", versionId);
    deleteRows(writer, "RKGroupsForVersions", "versionId=?", versionId);
    deleteRows(writer, "RKImageAdjustment", "versionUuid=?", uuid);
    deleteRows(writer, "RKStackContent", "versionUuid=?", uuid);
    deleteRows(writer, "RKCustomSortOrder", "objectUuid=?", uuid);
    deleteRows(writer, "RKNote", "attachedToUuid=?", uuid);
    Properties::removeAll(writer, versionId);
    const QList<qint64> proxies = Sql::integers(
        writer.connection, "SELECT modelId FROM RKImageProxyState WHERE versionId=?", versionId);
    RowIdIndexes::removeRows(writer, "RKImageProxyState", proxies);
    deleteRows(writer, "RKImageProxyState", "versionId=?", versionId);
    RowIdIndexes::removeRows(writer, "RKVersion", {versionId});
    deleteRows(writer, "RKVersion", "modelId=?", versionId);
}

void deleteMaster(Writer& writer, const QString& master)
{
    deleteRows(writer, "RKNote", "attachedToUuid=?", master);
    deleteRows(writer, "RKAttachment", "attachedToUuid=?", master);
    deleteRows(writer, "RKGroupsForMasters", "masterUuid=?", master);
    const QStringList partners = Sql::texts(
        writer.connection, "SELECT uuid FROM RKMaster WHERE alternateMasterUuid=?", master);
    for (const QString& partner : partners) {
        Sql::execute(writer.connection,
                     "UPDATE RKMaster SET alternateMasterUuid=NULL WHERE uuid=?",
                     partner);
        writer.changes.masters.insert(partner);
    }
    RowIdIndexes::removeRows(
        writer,
        "RKMaster",
        Sql::integers(writer.connection, "SELECT modelId FROM RKMaster WHERE uuid=?", master));
    deleteRows(writer, "RKMaster", "uuid=?", master);
    writer.changes.masters.remove(master); // its sidecars go with it
}

/// Whether a version outside the given photo still needs the master, be it in the trash or not.
bool isNeeded(Connection& connection, const QString& master)
{
    for (const char* sql : {"SELECT modelId FROM RKVersion WHERE masterUuid=? AND showInLibrary=1",
                            "SELECT modelId FROM RKVersion WHERE rawMasterUuid=? AND "
                            "showInLibrary=1",
                            "SELECT modelId FROM RKVersion WHERE nonRawMasterUuid=? AND "
                            "showInLibrary=1"}) {
        if (Sql::firstInteger(connection, sql, master).has_value()) {
            return true;
        }
    }
    return false;
}

void deletePhoto(Writer& writer, qint64 versionId, PhotoFiles& files)
{
    const QStringList masters = MastersOfPhoto::of(writer.connection, versionId);
    const std::optional<qint64> number = Sql::firstInteger(
        writer.connection, "SELECT versionNumber FROM RKVersion WHERE modelId=?", versionId);
    files.addVersion(versionId);
    deleteVersion(writer, versionId);
    if (number && isNeeded(writer.connection, masters.first())) {
        files.addVersionSidecar(masters.first(), *number);
    }
    for (const QString& master : masters) {
        if (isNeeded(writer.connection, master)) {
            // It stays with the photo that still shows it.
            writer.changes.masters.insert(master);
            continue;
        }
        const QList<qint64> hidden = MastersOfPhoto::hiddenVersions(writer.connection, master);
        for (const qint64 version : hidden) {
            files.addVersion(version);
            deleteVersion(writer, version);
        }
        files.addMaster(master);
        deleteMaster(writer, master);
    }
}

} // namespace

/// No library before and after its trash was emptied was at hand: which rows go is concluded from
/// which rows name a photo.
TrashRows::Leftovers TrashRows::deleteForGood(Writer& writer, const QList<qint64>& versionIds)
{
    PhotoFiles files(writer.connection);
    for (const qint64 versionId : versionIds) {
        const bool isInTrash = Sql::firstInteger(writer.connection,
                                                 "SELECT modelId FROM RKVersion WHERE modelId=? "
                                                 "AND showInLibrary=1 AND isInTrash<>0",
                                                 versionId)
                                   .has_value();
        if (isInTrash) {
            deletePhoto(writer, versionId, files);
            writer.changes.adminData = true; // it tells the numbers of masters and photos
            writer.changes.catalogues = true;
        }
    }
    return files.leftovers();
}
