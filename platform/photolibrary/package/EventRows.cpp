#include "EventRows.h"

#include "AlbumRows.h"
#include "ModelIds.h"
#include "Queries.h"
#include "RowIdIndexes.h"
#include "Uuid.h"

using namespace Qt::StringLiterals;

namespace
{

struct Event {
    qint64 id{0};
    QString uuid;
    QString album;
    QString poster;
    bool isInTrash{false};
    QVariant createDate;
};

/// The photos of an event: shown ones count, hidden ones keep it out of the trash. No library with
/// a hidden photo was at hand: that the application does not count them is concluded from its not
/// showing them.
struct Census {
    qint64 shown{0};
    qint64 present{0};
    qint64 trashed{0};
    QVariant firstDate;
    QVariant lastDate;
};

std::optional<Event> findEvent(Connection& connection, const QString& uuid)
{
    Sql::Query query(connection,
                     "SELECT modelId,implicitAlbumUuid,posterVersionUuid,isInTrash,createDate FROM "
                     "RKFolder WHERE uuid=? AND folderType=2 AND isMagic=0",
                     uuid);
    if (!query.next()) {
        return std::nullopt;
    }
    return Event{static_cast<qint64>(query.column(0).getInt64()),
                 uuid,
                 Sql::text(query.column(1)),
                 Sql::text(query.column(2)),
                 query.column(3).getInt() != 0,
                 Sql::value(query.column(4))};
}

Census census(Connection& connection, const QString& event)
{
    Sql::Query query(connection,
                     "SELECT sum(isInTrash=0 AND isHidden=0),sum(isInTrash=0),sum(isInTrash<>0),"
                     "min(CASE WHEN isInTrash=0 AND isHidden=0 THEN imageDate END),"
                     "max(CASE WHEN isInTrash=0 AND isHidden=0 THEN imageDate END) "
                     "FROM RKVersion WHERE projectUuid=? AND showInLibrary=1",
                     event);
    if (!query.next()) {
        return {};
    }
    return {static_cast<qint64>(query.column(0).getInt64()),
            static_cast<qint64>(query.column(1).getInt64()),
            static_cast<qint64>(query.column(2).getInt64()),
            Sql::value(query.column(3)),
            Sql::value(query.column(4))};
}

QString zoneOf(Connection& connection, const QString& event, const QVariant& date)
{
    return Sql::firstText(connection,
                          "SELECT imageTimeZoneName FROM RKVersion WHERE projectUuid=? AND "
                          "imageDate=? AND showInLibrary=1 AND isInTrash=0 AND isHidden=0",
                          event,
                          date);
}

/// The signs in what follows keep SQLite to the index of the uuid: it takes that of the trash to be
/// as good, by which it would look at nearly every photo.
/// A key photo that is no longer shown gives way to the earliest one that is: that the application
/// takes the earliest is concluded from one event. An event without any keeps its own for the day
/// they come back.
void updatePoster(Writer& writer, const Event& event)
{
    const bool isShown =
        Sql::firstInteger(writer.connection,
                          "SELECT modelId FROM RKVersion WHERE uuid=? AND +projectUuid=? AND "
                          "showInLibrary=1 AND +isInTrash=0 AND +isHidden=0",
                          event.poster,
                          event.uuid)
            .has_value();
    if (isShown) {
        return;
    }
    const QString first =
        Sql::firstText(writer.connection,
                       "SELECT uuid FROM RKVersion WHERE projectUuid=? AND showInLibrary=1 AND "
                       "isInTrash=0 AND isHidden=0 ORDER BY imageDate,modelId LIMIT 1",
                       event.uuid);
    if (!first.isNull()) {
        Sql::execute(writer.connection,
                     "UPDATE RKFolder SET posterVersionUuid=? WHERE modelId=?",
                     first,
                     event.id);
    }
}

/// The one event in the trash of a library at hand went there with all its photos. That it also
/// follows when they go one by one is concluded from that.
void updateTrash(Writer& writer, const Event& event, const Census& photos)
{
    const bool goes = !event.isInTrash && photos.present == 0 && photos.trashed > 0;
    const bool returns = event.isInTrash && photos.present > 0;
    if (!goes && !returns) {
        return;
    }
    Sql::execute(writer.connection,
                 "UPDATE RKFolder SET isInTrash=? WHERE modelId=?",
                 goes ? 1 : 0,
                 event.id);
    const std::optional<qint64> album = Sql::firstInteger(
        writer.connection, "SELECT modelId FROM RKAlbum WHERE uuid=?", event.album);
    if (album) {
        AlbumRows::setInTrash(writer, *album, goes);
    }
}

} // namespace

QString EventRows::createEvent(Writer& writer, const QString& name)
{
    const qint64 id = ModelIds::allocate(writer, "RKFolder");
    QString uuid = Uuid::create();
    const QString words = name.isNull() ? u""_s : name;
    const QString album = AlbumRows::createImplicitAlbum(writer, words, uuid);
    const QString parentPath = Sql::firstText(
        writer.connection, "SELECT folderPath FROM RKFolder WHERE uuid=?", "AllProjectsItem"_L1);
    Sql::execute(writer.connection,
                 "INSERT INTO RKFolder(modelId,uuid,folderType,name,parentFolderUuid,"
                 "implicitAlbumUuid,automaticallyGenerateFullSizePreviews,versionCount,"
                 "minImageDate,maxImageDate,folderPath,createDate,isExpanded,isHidden,"
                 "isHiddenWhenEmpty,isFavorite,isInTrash,isMagic,colorLabelIndex,sortAscending,"
                 "sortKeyPath) VALUES(?1,?2,2,?3,'AllProjectsItem',?4,1,0,?5,?5,?6,?5,0,0,0,0,0,0,"
                 "-1,1,'custom.kind')",
                 id,
                 uuid,
                 words,
                 album,
                 writer.now,
                 u"%1%2/"_s.arg(parentPath.isNull() ? u"1/2/"_s : parentPath, QString::number(id)));
    RowIdIndexes::addRows(writer, "RKFolder", {id});
    writer.changes.folders.insert(uuid);
    writer.changes.catalogues = true;
    return uuid;
}

void EventRows::updateStatistics(Writer& writer, const QString& uuid)
{
    const std::optional<Event> event = findEvent(writer.connection, uuid);
    if (!event) {
        return;
    }
    const Census photos = census(writer.connection, uuid);
    const bool isEmpty = photos.firstDate.isNull();
    const QString firstZone =
        isEmpty ? QString() : zoneOf(writer.connection, uuid, photos.firstDate);
    const QString lastZone = isEmpty ? QString() : zoneOf(writer.connection, uuid, photos.lastDate);
    Sql::execute(writer.connection,
                 "UPDATE RKFolder SET versionCount=?,minImageDate=?,maxImageDate=?,"
                 "minImageTimeZoneName=?,maxImageTimeZoneName=? WHERE modelId=?",
                 photos.shown,
                 isEmpty ? event->createDate : photos.firstDate,
                 isEmpty ? event->createDate : photos.lastDate,
                 firstZone,
                 lastZone,
                 event->id);
    updatePoster(writer, *event);
    updateTrash(writer, *event, photos);
    writer.changes.folders.insert(uuid);
    writer.changes.catalogues = true;
}
