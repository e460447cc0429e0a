#include "LibraryReader.h"

#include "Clock.h"
#include "IntegrityCheck.h"
#include "OpeningChecks.h"
#include "PathMapping.h"
#include "Queries.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHash>
#include <QTimeZone>

#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

constexpr const char* kPhotos =
    "SELECT v.modelId, v.uuid, m.uuid, m.fileName, v.name, sc.stringProperty, v.mainRating,"
    " v.imageDate, v.imageTimeZoneName, v.processedWidth, v.processedHeight, v.exifLatitude,"
    " v.exifLongitude, ea.numberProperty, m.imagePath, m.fileIsReference, m.isTrulyRaw, m.type,"
    " v.hasEnabledAdjustments, v.isHidden, p.fullSizePreviewPath, p.miniThumbnailPath,"
    " f.modelId, f.name, v.rotation, o.rotation, a.imagePath, a.fileIsReference"
    " FROM RKVersion v"
    " JOIN RKMaster m ON m.uuid = coalesce(v.rawMasterUuid, v.masterUuid)"
    " LEFT JOIN RKMaster a ON a.uuid = m.alternateMasterUuid"
    " LEFT JOIN RKVersion o ON o.uuid = m.originalVersionUuid"
    " LEFT JOIN RKFolder f ON f.uuid = v.projectUuid"
    " LEFT JOIN prox.RKImageProxyState p ON p.versionUuid = v.uuid"
    " LEFT JOIN prop.RKIptcProperty ic ON ic.versionId = v.modelId"
    " AND ic.propertyKey = 'Caption/Abstract'"
    " LEFT JOIN prop.RKUniqueString sc ON sc.modelId = ic.stringId"
    " LEFT JOIN prop.RKExifNumberProperty ea ON ea.versionId = v.modelId"
    " AND ea.propertyKey = 'Altitude'"
    " WHERE v.showInLibrary = 1 AND v.isInTrash = ?"
    " ORDER BY f.minImageDate, v.imageDate, v.modelId";

/// Names by photo: keywords or albums.
using NamesByPhoto = QHash<qint64, QStringList>;

NamesByPhoto namesByPhoto(Connection& connection, const char* sql)
{
    NamesByPhoto names;
    for (Sql::Query query(connection, sql); query.next();) {
        names[query.column(0).getInt64()].append(Sql::text(query.column(1)));
    }
    return names;
}

std::optional<double> realOrNothing(const SQLite::Column& column)
{
    return column.isInteger() || column.isFloat() ? std::optional<double>(column.getDouble())
                                                  : std::nullopt;
}

/// Bytes of a file that can be read; nothing where there is none.
std::optional<qint64> readableBytes(const QString& path)
{
    const QFileInfo file(path);
    const bool usable = !path.isEmpty() && file.isFile() && file.isReadable();
    return usable ? std::optional<qint64>(file.size()) : std::nullopt;
}

/// Reads the columns of kPhotos one after another.
class PhotoReader final
{
public:
    PhotoReader(Connection& connection, Sql::Query& query, bool inTrash)
        : m_package(connection.packagePath())
        , m_query(query)
        , m_inTrash(inTrash)
    {
    }

    [[nodiscard]] PhotoFacts read()
    {
        PhotoFacts photo;
        readIdentity(photo);
        readPlaceAndTime(photo);
        readFiles(photo);
        return photo;
    }

private:
    SQLite::Column next() { return m_query.column(m_index++); }

    void readIdentity(PhotoFacts& photo)
    {
        photo.id = next().getInt64();
        photo.guid = Sql::text(next());
        photo.masterGuid = Sql::text(next());
        photo.fileName = Sql::text(next());
        photo.name = Sql::text(next());
        photo.comment = Sql::text(next());
        photo.rating = next().getInt();
    }

    void readPlaceAndTime(PhotoFacts& photo)
    {
        photo.date = realOrNothing(next()).value_or(0.0);
        photo.zoneName = Sql::text(next());
        photo.width = next().getInt();
        photo.height = next().getInt();
        photo.latitude = realOrNothing(next());
        photo.longitude = realOrNothing(next());
        photo.altitude = realOrNothing(next());
    }

    void readFiles(PhotoFacts& photo)
    {
        const QString imagePath = Sql::text(next());
        const bool isReference = next().getInt() != 0;
        photo.raw = next().getInt() != 0;
        photo.movie = Sql::text(next()) == "VIDT"_L1;
        photo.edited = next().getInt() != 0;
        photo.hidden = next().getInt() != 0;
        const QString preview = Sql::text(next());
        const QString thumbnail = Sql::text(next());
        photo.rollId = next().getInt64();
        photo.rollName = Sql::text(next());
        photo.originalPath = PathMapping::master(m_package, imagePath, isReference);
        photo.previewPath = PathMapping::inside(m_package, "Previews"_L1, preview);
        photo.imagePath = preview.isNull() ? photo.originalPath : photo.previewPath;
        photo.thumbnailPath = PathMapping::inside(m_package, "Thumbnails"_L1, thumbnail);
        const std::optional<double> rotation = realOrNothing(next());
        const std::optional<double> importedRotation = realOrNothing(next());
        photo.rotated = rotation && importedRotation && *rotation != *importedRotation;
        const std::optional<qint64> bytes = readableBytes(photo.originalPath);
        photo.missing = !bytes.has_value();
        photo.bytes = bytes.value_or(0);
        const QString alternate = Sql::text(next());
        const bool alternateIsReference = next().getInt() != 0;
        if (m_inTrash && !alternate.isNull()) {
            const QString path = PathMapping::master(m_package, alternate, alternateIsReference);
            photo.bytes += readableBytes(path).value_or(0);
        }
    }

    QString m_package;
    Sql::Query& m_query;
    bool m_inTrash;
    int m_index{0};
};

QList<PhotoFacts> readPhotos(Connection& connection, bool inTrash)
{
    const NamesByPhoto keywords =
        namesByPhoto(connection,
                     "SELECT kv.versionId, k.name FROM RKKeywordForVersion kv JOIN RKKeyword k"
                     " ON k.modelId = kv.keywordId ORDER BY kv.versionId, k.name COLLATE NOCASE");
    const NamesByPhoto albums =
        namesByPhoto(connection,
                     "SELECT av.versionId, a.name FROM RKAlbumVersion av JOIN RKAlbum a"
                     " ON a.modelId = av.albumId WHERE a.albumSubclass = 3 AND a.isMagic = 0"
                     " AND a.isHidden = 0 AND a.isInTrash = 0 AND a.uuid NOT IN"
                     " ('lastImportAlbum', 'rotationAlbum')"
                     " ORDER BY av.versionId, a.name COLLATE NOCASE");
    QList<PhotoFacts> photos;
    Sql::Query query(connection, kPhotos, inTrash ? 1 : 0);
    while (query.next()) {
        PhotoFacts photo = PhotoReader(connection, query, inTrash).read();
        photo.keywords = keywords.value(photo.id);
        photo.keywords.sort(Qt::CaseInsensitive);
        photo.albums = albums.value(photo.id);
        photos.append(photo);
    }
    return photos;
}

int count(Connection& connection, const char* sql)
{
    return static_cast<int>(Sql::firstInteger(connection, sql).value_or(0));
}

bool isWritable(Connection& connection)
{
    return OpeningChecks::permissions(connection.packagePath()).ok() &&
           OpeningChecks::writableSchema(connection).ok() && OpeningChecks::closedClean(connection);
}

} // namespace

QString PhotoFacts::wallClock() const
{
    constexpr double kMilliseconds = 1000.0;
    const double unix = date + kSecondsFrom1970To2001;
    constexpr double kFarthest = 1e14; // what QDateTime can tell, in seconds
    if (!std::isfinite(unix) || std::abs(unix) > kFarthest) {
        return {};
    }
    QDateTime moment = QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>(std::floor(unix * kMilliseconds)), Qt::UTC);
    if (!zoneName.isEmpty() && zoneName != "GMT"_L1) {
        const QTimeZone zone(zoneName.toUtf8());
        if (zone.isValid()) {
            moment = moment.toTimeZone(zone);
        }
    }
    return moment.toString(u"yyyy-MM-ddTHH:mm:ss"_s);
}

QList<PhotoFacts> LibraryReader::photos(Connection& connection)
{
    return readPhotos(connection, false);
}

QList<PhotoFacts> LibraryReader::trashedPhotos(Connection& connection)
{
    return readPhotos(connection, true);
}

LibrarySummary LibraryReader::summary(Connection& connection, const QSet<QString>& namedFiles)
{
    LibrarySummary summary;
    for (const PhotoFacts& photo : photos(connection)) {
        ++summary.photos;
        summary.missing += photo.missing ? 1 : 0;
        if (photo.raw) {
            ++summary.rawPhotos;
            summary.rawBytes += photo.bytes;
        }
        // A library that knew the keyword in other letters keeps its own spelling.
        const bool isCopy = photo.keywords.contains(u"Corvane Processed"_s, Qt::CaseInsensitive) &&
                            !photo.keywords.contains(u"Corvane Original"_s);
        summary.processedPhotos += isCopy ? 1 : 0;
    }
    for (const PhotoFacts& photo : trashedPhotos(connection)) {
        ++summary.trashedPhotos;
        summary.trashedBytes += photo.bytes;
    }
    summary.rolls = count(connection,
                          "SELECT count(*) FROM RKFolder WHERE folderType = 2 AND isMagic = 0"
                          " AND isInTrash = 0 AND versionCount > 0");
    summary.albums = count(connection,
                           "SELECT count(*) FROM RKAlbum WHERE albumSubclass = 3 AND isMagic = 0"
                           " AND isHidden = 0 AND isInTrash = 0 AND uuid NOT IN"
                           " ('lastImportAlbum', 'rotationAlbum')");
    summary.keywords = count(connection, "SELECT count(*) FROM RKKeyword");
    summary.writable = isWritable(connection);
    summary.problems = IntegrityCheck::problems(connection, namedFiles);
    return summary;
}
