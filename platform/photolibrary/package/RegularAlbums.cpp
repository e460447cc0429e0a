#include "RegularAlbums.h"

#include "FoldersInTrash.h"
#include "Queries.h"

#include <QSet>
#include <QVariant>

namespace
{

/// One album, or all for want of an id; by their ids in either case: every album of every event is
/// out of the trash too, and a photo's turn asks several times. No library at hand has an album of
/// a photo stream, a published one, a book or a slideshow: that such have a service, another type,
/// or a folder of their own is concluded from the built-in folders and from what public readers
/// know. In doubt an album is none of the user's own, and is left alone.
constexpr const char* kRegularAlbums =
    "SELECT modelId, folderUuid FROM RKAlbum WHERE modelId BETWEEN"
    " coalesce(?1, -9223372036854775808) AND coalesce(?1, 9223372036854775807)"
    " AND +albumSubclass = 3"
    " AND isMagic = 0 AND +isHidden = 0 AND +isInTrash = 0 AND coalesce(serviceName, '') = ''"
    " AND coalesce(albumType, 1) = 1 AND folderUuid NOT IN"
    " ('', 'RKPhotostreamFolder', 'PublishedProjects', 'TopLevelSlideshows') AND uuid NOT IN "
    "('lastImportAlbum', 'rotationAlbum', 'trashAlbum',"
    " 'allPhotosAlbum', 'allProjectsAlbum', 'flaggedAlbum', 'lastNMonthsAlbum', 'rejectedAlbum',"
    " 'eventFilterBarAlbum', 'peopleAlbum', 'allPlacedPhotosAlbum', 'libraryFolderImplicitAlbum')"
    " ORDER BY modelId";

QList<qint64> albumsOf(Connection& connection, const QVariant& id)
{
    const QSet<QString> foldersInTrash = FoldersInTrash::of(connection);
    QList<qint64> ids;
    for (Sql::Query query(connection, kRegularAlbums, id); query.next();) {
        if (!foldersInTrash.contains(Sql::text(query.column(1)))) {
            ids.append(query.column(0).getInt64());
        }
    }
    return ids;
}

} // namespace

QList<qint64> RegularAlbums::ids(Connection& connection)
{
    return albumsOf(connection, QVariant());
}

bool RegularAlbums::holds(Connection& connection, qint64 id)
{
    return !albumsOf(connection, id).isEmpty();
}
