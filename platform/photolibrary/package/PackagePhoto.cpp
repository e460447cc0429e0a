#include "PackagePhoto.h"

#include "AlbumRows.h"
#include "LooseRows.h"
#include "PackageAlbum.h"
#include "PathMapping.h"
#include "PhotoRows.h"
#include "Queries.h"
#include "RegularAlbums.h"
#include "TrashRows.h"
#include "Volumes.h"

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

/// What the property record and the paths are made of.
struct Record {
    QVariant fileName;
    QVariant name;
    QVariant date;
    QVariant zone;
    QVariant width;
    QVariant height;
    QVariant rating;
    QVariant imagePath;
    qint64 isReference{0};
    QVariant preview;
    QVariant miniature;
    qint64 rotation{0};
    qint64 mayBeEdited{0};
    PathMapping::MasterPlace alternate;
    QString volumeFolder;
};

constexpr const char* kRecord =
    "SELECT m.fileName, v.name, v.imageDate, v.imageTimeZoneName, v.processedWidth,"
    " v.processedHeight, v.mainRating, m.imagePath, m.fileIsReference, p.fullSizePreviewPath,"
    " p.miniThumbnailPath, v.rotation,"
    " v.hasEnabledAdjustments <> 0 OR p.fullSizePreviewUpToDate = 0,"
    " m.fileVolumeUuid,"
    " a.imagePath, a.fileIsReference, a.fileVolumeUuid"
    " FROM RKVersion v"
    " JOIN RKMaster m ON m.uuid = coalesce(v.rawMasterUuid, v.masterUuid)"
    " LEFT JOIN RKMaster a ON a.uuid = m.alternateMasterUuid"
    " LEFT JOIN prox.RKImageProxyState p ON p.versionUuid = v.uuid"
    " WHERE v.modelId = ? AND v.showInLibrary = 1";

QString volumeFolder(Connection& connection, bool isReference, const QString& volume)
{
    return isReference ? Volumes::of(connection, volume).folder : QString();
}

std::optional<Record> recordOf(Connection& connection, qint64 id)
{
    Sql::Query query(connection, kRecord, id);
    if (!query.next()) {
        return std::nullopt;
    }
    Record record;
    int column = 0;
    for (QVariant* value : {&record.fileName,
                            &record.name,
                            &record.date,
                            &record.zone,
                            &record.width,
                            &record.height,
                            &record.rating,
                            &record.imagePath}) {
        *value = Sql::value(query.column(column++));
    }
    record.isReference = query.column(column++).getInt64();
    record.preview = Sql::value(query.column(column++));
    record.miniature = Sql::value(query.column(column++));
    record.rotation = query.column(column++).getInt64();
    record.mayBeEdited = query.column(column++).getInt64();
    const QString volume = Sql::text(query.column(column++));
    record.alternate.imagePath = Sql::text(query.column(column++));
    record.alternate.isReference = query.column(column++).getInt64() != 0;
    const QString alternateVolume = Sql::text(query.column(column++));
    record.volumeFolder = volumeFolder(connection, record.isReference != 0, volume);
    record.alternate.volumeFolder =
        volumeFolder(connection, record.alternate.isReference, alternateVolume);
    return record;
}

[[noreturn]] void raiseGone(qint64 id)
{
    throw ScriptingException(u"NoSuchPhoto"_s, u"The photo %1 is no longer there."_s.arg(id));
}

bool isText(const QVariant& value)
{
    return value.typeId() == QMetaType::QString;
}

bool isNumber(const QVariant& value)
{
    return value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Double;
}

QString masterPath(const QString& package, const Record& record)
{
    return isText(record.imagePath)
               ? PathMapping::master(
                     package,
                     {record.imagePath.toString(), record.isReference != 0, record.volumeFolder})
               : QString();
}

/// Absolute path of a file below a folder of the package; empty for NULL and for what leads out.
QString below(const QString& package, QLatin1StringView folder, const QVariant& relative)
{
    return isText(relative) ? PathMapping::inside(package, folder, relative.toString()) : QString();
}

/// An empty path is the null object.
QVariant pathValue(const QString& path)
{
    return path.isEmpty() ? QVariant() : QVariant(path);
}

std::optional<QString> pathOrNothing(const QString& path)
{
    return path.isEmpty() ? std::nullopt : std::optional<QString>(path);
}

} // namespace

PackagePhoto::PackagePhoto(std::shared_ptr<PhotoLibraryPrivate> library, qint64 id)
    : m_library(std::move(library))
    , m_id(id)
{
}

std::optional<QVariantMap> PackagePhoto::properties()
{
    const std::optional<Record> record =
        m_library->read([this](Connection& connection) { return recordOf(connection, m_id); });
    if (!record) {
        return std::nullopt;
    }
    const QString& package = m_library->path();
    QVariantMap properties{{u"id"_s, m_id}};
    if (isText(record->fileName)) {
        properties.insert(u"imageFilename"_s, record->fileName);
    }
    const QVariant master = pathValue(masterPath(package, *record));
    if (isText(record->imagePath)) {
        properties.insert(u"originalPath"_s, master);
    }
    if (isText(record->preview)) {
        properties.insert(u"imagePath"_s,
                          pathValue(below(package, "Previews"_L1, record->preview)));
    } else if (record->preview.isNull() && isText(record->imagePath)) {
        properties.insert(u"imagePath"_s, master);
    }
    if (isNumber(record->date)) {
        properties.insert(
            u"date"_s,
            QVariant::fromValue(PhotoDate{record->date.toDouble(), record->zone.toString()}));
    }
    if (isNumber(record->height)) {
        properties.insert(u"height"_s, record->height);
    }
    if (isNumber(record->width)) {
        properties.insert(u"width"_s, record->width);
    }
    if (isText(record->name)) {
        properties.insert(u"name"_s, record->name);
        properties.insert(u"title"_s, record->name);
    }
    if (isNumber(record->rating)) {
        properties.insert(u"rating"_s, record->rating);
    }
    return properties;
}

std::optional<QString> PackagePhoto::originalPath()
{
    const std::optional<Record> record =
        m_library->read([this](Connection& connection) { return recordOf(connection, m_id); });
    return record ? pathOrNothing(masterPath(m_library->path(), *record)) : std::nullopt;
}

std::optional<QString> PackagePhoto::previewPath()
{
    const QVariant preview = column("SELECT p.fullSizePreviewPath FROM RKVersion v"
                                    " LEFT JOIN prox.RKImageProxyState p ON p.versionUuid = v.uuid"
                                    " WHERE v.modelId = ?");
    return pathOrNothing(below(m_library->path(), "Previews"_L1, preview));
}

std::optional<QString> PackagePhoto::thumbnailPath()
{
    const QVariant thumbnail = column("SELECT p.miniThumbnailPath FROM RKVersion v"
                                      " LEFT JOIN prox.RKImageProxyState p"
                                      " ON p.versionUuid = v.uuid WHERE v.modelId = ?");
    return pathOrNothing(below(m_library->path(), "Thumbnails"_L1, thumbnail));
}

QVariant PackagePhoto::column(const char* sql)
{
    const std::optional<QVariant> found =
        m_library->read([&](Connection& connection) -> std::optional<QVariant> {
            Sql::Query query(connection, sql, m_id);
            return query.next() ? std::optional<QVariant>(Sql::value(query.column(0)))
                                : std::nullopt;
        });
    if (!found) {
        raiseGone(m_id);
    }
    return *found;
}

int PackagePhoto::height()
{
    return column("SELECT processedHeight FROM RKVersion WHERE modelId = ?").toInt();
}

double PackagePhoto::latitude()
{
    return column("SELECT exifLatitude FROM RKVersion WHERE modelId = ?").toDouble();
}

double PackagePhoto::longitude()
{
    return column("SELECT exifLongitude FROM RKVersion WHERE modelId = ?").toDouble();
}

std::optional<double> PackagePhoto::altitude()
{
    return m_library->read([this](Connection& connection) {
        return Sql::firstReal(connection,
                              "SELECT numberProperty FROM prop.RKExifNumberProperty"
                              " WHERE versionId = ? AND propertyKey = 'Altitude'",
                              m_id);
    });
}

QString PackagePhoto::comment()
{
    const QString text = m_library->read([this](Connection& connection) {
        return Sql::firstText(connection,
                              "SELECT s.stringProperty FROM prop.RKIptcProperty p"
                              " JOIN prop.RKUniqueString s ON s.modelId = p.stringId"
                              " WHERE p.versionId = ? AND p.propertyKey = 'Caption/Abstract'",
                              m_id);
    });
    return text.isNull() ? u""_s : text;
}

PhotoDate PackagePhoto::date()
{
    const QVariant date = column("SELECT imageDate FROM RKVersion WHERE modelId = ?");
    return {isNumber(date) ? date.toDouble() : std::numeric_limits<double>::quiet_NaN(),
            column("SELECT imageTimeZoneName FROM RKVersion WHERE modelId = ?").toString()};
}

QString PackagePhoto::name()
{
    return column("SELECT name FROM RKVersion WHERE modelId = ?").toString();
}

int PackagePhoto::rating()
{
    return column("SELECT mainRating FROM RKVersion WHERE modelId = ?").toInt();
}

QString PackagePhoto::title()
{
    return name();
}

void PackagePhoto::setAltitude(std::optional<double> metres)
{
    m_library->write([&](Writer& writer) { PhotoRows::setAltitude(writer, m_id, metres); });
}

void PackagePhoto::setComment(const QString& comment)
{
    m_library->write([&](Writer& writer) { PhotoRows::setComment(writer, m_id, comment); });
}

void PackagePhoto::setDate(const PhotoDate& date)
{
    if (!std::isfinite(date.secondsSince2001)) {
        return;
    }
    m_library->write([&](Writer& writer) {
        PhotoRows::setDate(writer, m_id, date.secondsSince2001, date.zoneName);
    });
}

void PackagePhoto::setName(const QString& name)
{
    m_library->write([&](Writer& writer) { PhotoRows::setName(writer, m_id, name); });
}

void PackagePhoto::setRating(int rating)
{
    m_library->write([&](Writer& writer) { PhotoRows::setRating(writer, m_id, rating); });
}

void PackagePhoto::setTitle(const QString& title)
{
    setName(title);
}

QList<Keyword> PackagePhoto::keywords()
{
    const QStringList names = m_library->read([this](Connection& connection) {
        return Sql::texts(connection,
                          "SELECT k.name FROM RKKeywordForVersion kv JOIN RKKeyword k"
                          " ON k.modelId = kv.keywordId WHERE kv.versionId = ?"
                          " ORDER BY k.name COLLATE NOCASE",
                          m_id);
    });
    QList<Keyword> keywords;
    for (const QString& name : names) {
        keywords.append(Keyword{name});
    }
    return keywords;
}

void PackagePhoto::select()
{
    m_library->select(m_id);
}

void PackagePhoto::addTo(const AlbumPtr& album)
{
    if (!album) {
        return;
    }
    const qint64 id = album->id();
    m_library->write([&](Writer& writer) {
        if (RegularAlbums::holds(writer.connection, id)) {
            AlbumRows::addPhotos(writer, id, {m_id});
        }
    });
}

void PackagePhoto::removeFrom(const AlbumPtr& album)
{
    if (!album) {
        return;
    }
    const auto own = std::dynamic_pointer_cast<PackageAlbum>(album);
    if (own && own->kind() == PackageAlbum::Kind::PhotoLibrary) {
        m_library->write(
            [&](Writer& writer) { static_cast<void>(TrashRows::moveToTrash(writer, {m_id})); });
        return;
    }
    const qint64 id = album->id();
    m_library->write([&](Writer& writer) { AlbumRows::removePhotos(writer, id, {m_id}); });
}

PhotoEvidence PackagePhoto::evidence()
{
    PhotoEvidence evidence;
    const std::optional<Record> record =
        m_library->read([this](Connection& connection) { return recordOf(connection, m_id); });
    if (!record) {
        return evidence;
    }
    const QString& package = m_library->path();
    evidence.previewPath = below(package, "Previews"_L1, record->preview);
    evidence.edited = record->mayBeEdited != 0;
    evidence.rotation = static_cast<int>(record->rotation);
    const QString alternate = record->alternate.imagePath.isEmpty()
                                  ? QString()
                                  : PathMapping::master(package, record->alternate);
    for (const QString& file : {masterPath(package, *record), alternate, evidence.previewPath}) {
        if (!file.isEmpty()) {
            evidence.files.append(file);
        }
    }
    return evidence;
}

bool PackagePhoto::losesKeyword()
{
    return m_library->read(
        [this](Connection& connection) { return LooseRows::lostKeywords(connection, m_id) > 0; });
}
