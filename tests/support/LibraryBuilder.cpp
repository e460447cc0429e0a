#include "LibraryBuilder.h"

#include "AlbumRows.h"
#include "EventRows.h"
#include "ImageBuilder.h"
#include "ImageProperties.h"
#include "JpegDestination.h"
#include "LibraryCreator.h"
#include "ModelIds.h"
#include "PhotoLibrary.h"
#include "Properties.h"
#include "Queries.h"
#include "RowIdIndexes.h"
#include "TrashRows.h"
#include "Uuid.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <string>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kPicture(96, 64);
constexpr double kNow = 800000000.25;

void need(bool done, const char* what)
{
    if (!done) {
        qFatal("the library could not be made: %s", what);
    }
}

template <typename Value>
Value valueOf(Result<Value> result)
{
    if (!result.ok()) {
        qFatal("the library could not be made: %s", qPrintable(result.error().message));
    }
    return std::move(result).value();
}

QByteArray jpeg()
{
    return valueOf(JpegDestination::encode(ImageBuilder::scene(kPicture), ImageProperties(), 0.9));
}

std::unique_ptr<Connection> connectionTo(const QString& package)
{
    return valueOf(Connection::open(package, Connection::Mode::Write));
}

QString masterOf(Connection& connection, qint64 photo)
{
    return Sql::firstText(connection, "SELECT masterUuid FROM RKVersion WHERE modelId=?", photo);
}

QString eventOf(Connection& connection, qint64 photo)
{
    return Sql::firstText(connection, "SELECT projectUuid FROM RKVersion WHERE modelId=?", photo);
}

} // namespace

LibraryBuilder::LibraryBuilder(QString package)
    : m_package(std::move(package))
{
    need(LibraryCreator::create(m_package).ok(), "an empty one");
}

qint64
LibraryBuilder::import(const QString& fileName, const QByteArray& bytes, const QString& event)
{
    const QTemporaryDir folder;
    ImportRequest request;
    request.sourcePath = folder.filePath(fileName);
    request.eventName = event;
    ImageBuilder::write(request.sourcePath, bytes);
    if (fileName.endsWith(".dng"_L1, Qt::CaseInsensitive)) {
        request.preview = jpeg();
    }
    const auto library = valueOf(PhotoLibrary::open(m_package, {Access::Write, false}));
    // Every run has an event of its own: the photo moves to the first one of that name.
    const qint64 photo = valueOf(library->importPhoto(request));
    need(library->close().ok(), "closing");
    const double date = kNow + 60.0 * ++m_pictures;
    edit([&](Writer& writer) {
        Connection& connection = writer.connection;
        const QString imported = eventOf(connection, photo);
        const QString shared = Sql::firstText(connection,
                                              "SELECT uuid FROM RKFolder WHERE folderType=2 AND"
                                              " isMagic=0 AND name=? ORDER BY modelId LIMIT 1",
                                              event);
        const QString master = masterOf(connection, photo);
        Sql::execute(connection,
                     "UPDATE RKVersion SET projectUuid=?, imageDate=? WHERE masterUuid=?",
                     shared,
                     date,
                     master);
        Sql::execute(connection, "UPDATE RKMaster SET projectUuid=? WHERE uuid=?", shared, master);
        EventRows::updateStatistics(writer, imported);
        EventRows::updateStatistics(writer, shared);
    });
    return photo;
}

qint64 LibraryBuilder::addPhoto(const QString& fileName, const QString& event)
{
    return import(fileName, jpeg(), event);
}

qint64 LibraryBuilder::addRaw(const QString& fileName, const QString& event)
{
    const QByteArray bytes = ImageBuilder::dng(ImageBuilder::scene(kPicture, Transfer::Linear));
    return import(fileName, bytes, event);
}

qint64 LibraryBuilder::addPair(const QString& name, const QString& event, Active active)
{
    const qint64 raw = addRaw(name + ".dng"_L1, event);
    const qint64 other = addPhoto(name + ".JPG"_L1, event);
    edit([&](Writer& writer) {
        Connection& connection = writer.connection;
        const QString rawMaster = masterOf(connection, raw);
        const QString otherMaster = masterOf(connection, other);
        dissolve(writer, other);
        const char* const pair = "UPDATE RKMaster SET alternateMasterUuid=? WHERE uuid=?";
        Sql::execute(connection, pair, otherMaster, rawMaster);
        Sql::execute(connection, pair, rawMaster, otherMaster);
        Sql::execute(connection,
                     "UPDATE RKVersion SET rawMasterUuid=?2, nonRawMasterUuid=?3, masterUuid=?4,"
                     " masterId=(SELECT modelId FROM RKMaster WHERE uuid=?4) WHERE modelId=?1",
                     raw,
                     rawMaster,
                     otherMaster,
                     active == Active::Raw ? rawMaster : otherMaster);
        EventRows::updateStatistics(writer, eventOf(connection, raw));
    });
    return raw;
}

void LibraryBuilder::dissolve(Writer& writer, qint64 photo)
{
    Connection& connection = writer.connection;
    AlbumRows::replaceLastImport(writer, {});
    Properties::removeAll(writer, photo);
    Sql::execute(connection, "DELETE FROM prox.RKImageProxyState WHERE versionId=?", photo);
    Sql::execute(connection, "DELETE FROM RKKeywordForVersion WHERE versionId=?", photo);
    Sql::execute(connection, "DELETE FROM RKVersion WHERE modelId=?", photo);
}

QString LibraryBuilder::imagePath(qint64 photo)
{
    return Sql::firstText(*connectionTo(m_package),
                          "SELECT m.imagePath FROM RKMaster m JOIN RKVersion v"
                          " ON m.uuid=v.masterUuid WHERE v.modelId=?",
                          photo);
}

void LibraryBuilder::makeReference(qint64 photo,
                                   const QString& volume,
                                   const QString& root,
                                   const QString& path)
{
    const QString there = root + u'/' + path;
    need(QDir().mkpath(QFileInfo(there).path()), "the folder of a disk");
    need(QFile::rename(m_package + "/Masters/"_L1 + imagePath(photo), there), "a referenced file");
    edit([&](Writer& writer) {
        Connection& connection = writer.connection;
        QString uuid = Sql::firstText(connection, "SELECT uuid FROM RKVolume WHERE name=?", volume);
        if (uuid.isNull() && !volume.isEmpty()) {
            uuid = Uuid::create();
            Sql::execute(connection,
                         "INSERT INTO RKVolume(modelId,uuid,name,isOffline) VALUES(?,?,?,0)",
                         ModelIds::allocate(writer, "RKVolume"),
                         uuid,
                         volume);
        }
        Sql::execute(connection,
                     "UPDATE RKMaster SET fileIsReference=1, imagePath=?, fileVolumeUuid=?"
                     " WHERE uuid=?",
                     path,
                     uuid,
                     masterOf(connection, photo));
    });
}

QString LibraryBuilder::makeEdited(qint64 photo)
{
    const QString guid = Sql::firstText(
        *connectionTo(m_package), "SELECT uuid FROM RKVersion WHERE modelId=?", photo);
    const QString path = QFileInfo(imagePath(photo)).path() + u'/' + guid + "/Edited title.jpg"_L1;
    QString preview = m_package + "/Previews/"_L1 + path;
    need(QDir().mkpath(QFileInfo(preview).path()), "the folder of a preview");
    ImageBuilder::write(preview, jpeg());
    edit([&](Writer& writer) {
        Sql::execute(writer.connection,
                     "UPDATE prox.RKImageProxyState SET fullSizePreviewPath=? WHERE versionId=?",
                     path,
                     photo);
    });
    set(u"RKVersion"_s, photo, u"hasAdjustments=1, hasEnabledAdjustments=1"_s);
    return preview;
}

void LibraryBuilder::makeMovie(qint64 photo)
{
    edit([photo](Writer& writer) {
        Sql::execute(writer.connection,
                     "UPDATE RKMaster SET type='VIDT', subtype='VIDST' WHERE uuid=?",
                     masterOf(writer.connection, photo));
    });
}

void LibraryBuilder::setHidden(qint64 photo)
{
    set(u"RKVersion"_s, photo, u"isHidden=1"_s);
}

void LibraryBuilder::setFlagged(qint64 photo)
{
    set(u"RKVersion"_s, photo, u"isFlagged=1"_s);
}

void LibraryBuilder::moveToTrash(qint64 photo)
{
    edit([photo](Writer& writer) {
        need(TrashRows::moveToTrash(writer, {photo}) == 1, "a photo in the trash");
    });
}

qint64 LibraryBuilder::addAlbum(const QString& name, const QList<qint64>& photos)
{
    qint64 album = 0;
    edit([&](Writer& writer) {
        album = AlbumRows::createAlbum(writer, name);
        AlbumRows::addPhotos(writer, album, photos);
    });
    return album;
}

qint64 LibraryBuilder::addAlbumInFolder(const QString& folder,
                                        const QString& name,
                                        const QList<qint64>& photos)
{
    const qint64 album = addAlbum(name, photos);
    edit([&](Writer& writer) {
        const qint64 id = ModelIds::allocate(writer, "RKFolder");
        const QString uuid = Uuid::create();
        Sql::execute(writer.connection,
                     "INSERT INTO RKFolder(modelId,uuid,folderType,name,parentFolderUuid,"
                     "implicitAlbumUuid,versionCount,folderPath,createDate,isExpanded,isHidden,"
                     "isHiddenWhenEmpty,isFavorite,isInTrash,isMagic,colorLabelIndex,sortAscending,"
                     "sortKeyPath) SELECT ?1,?2,1,?3,uuid,?4,0,folderPath||?1||'/',?5,0,0,0,0,0,0,"
                     "-1,1,'custom.default' FROM RKFolder WHERE uuid='TopLevelAlbums'",
                     id,
                     uuid,
                     folder,
                     AlbumRows::createImplicitAlbum(writer, folder, uuid),
                     kNow);
        Sql::execute(
            writer.connection, "UPDATE RKAlbum SET folderUuid=? WHERE modelId=?", uuid, album);
    });
    return album;
}

void LibraryBuilder::addEmptyEvent(const QString& name)
{
    edit([&name](Writer& writer) {
        Sql::execute(writer.connection,
                     "UPDATE RKFolder SET isHiddenWhenEmpty=1 WHERE uuid=?",
                     EventRows::createEvent(writer, name));
    });
}

void LibraryBuilder::set(const QString& table, qint64 modelId, const QString& assignments)
{
    edit([&](Writer& writer) {
        writer.connection.database().exec(
            u"UPDATE %1 SET %2 WHERE modelId=%3"_s.arg(table, assignments, QString::number(modelId))
                .toStdString());
    });
}

void LibraryBuilder::edit(const std::function<void(Writer&)>& change)
{
    const auto connection = connectionTo(m_package);
    Changes changes;
    Writer writer{*connection, changes, kNow};
    connection->beginImmediate();
    change(writer);
    RowIdIndexes::recomputeAll(writer);
    connection->commit();
}
