#include "LibraryReader.h"

#include "Clock.h"
#include "IntegrityCheck.h"
#include "OpeningChecks.h"
#include "PathMapping.h"
#include "Queries.h"

#include <QDateTime>
#include <QFile>
#include <QHash>
#include <QTimeZone>
#include <QVariant>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
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
    " ORDER BY f.minImageDate, f.modelId, v.imageDate, v.modelId";

/// One album, or all for want of an id.
constexpr const char* kRegularAlbums =
    "SELECT modelId FROM RKAlbum WHERE (?1 IS NULL OR modelId = ?1) AND albumSubclass = 3"
    " AND isMagic = 0 AND isHidden = 0 AND isInTrash = 0 AND coalesce(serviceName, '') = ''"
    " AND folderUuid <> '' AND uuid NOT IN ('lastImportAlbum', 'rotationAlbum', 'trashAlbum',"
    " 'allPhotosAlbum', 'allProjectsAlbum', 'flaggedAlbum', 'lastNMonthsAlbum', 'rejectedAlbum',"
    " 'eventFilterBarAlbum', 'peopleAlbum', 'allPlacedPhotosAlbum', 'libraryFolderImplicitAlbum')"
    " ORDER BY modelId";

/// Names by photo: keywords or albums.
using NamesByPhoto = QHash<qint64, QStringList>;

NamesByPhoto keywordsByPhoto(Connection& connection)
{
    NamesByPhoto names;
    Sql::Query query(connection,
                     "SELECT kv.versionId, k.name FROM RKKeywordForVersion kv JOIN RKKeyword k"
                     " ON k.modelId = kv.keywordId ORDER BY kv.versionId, k.name COLLATE NOCASE");
    while (query.next()) {
        names[query.column(0).getInt64()].append(Sql::text(query.column(1)));
    }
    return names;
}

NamesByPhoto albumsByPhoto(Connection& connection)
{
    const QList<qint64> ids = LibraryReader::regularAlbums(connection);
    const QSet<qint64> regular(ids.begin(), ids.end());
    NamesByPhoto names;
    Sql::Query query(connection,
                     "SELECT av.versionId, a.name, a.modelId FROM RKAlbumVersion av"
                     " JOIN RKAlbum a ON a.modelId = av.albumId"
                     " ORDER BY av.versionId, a.name COLLATE NOCASE");
    while (query.next()) {
        if (regular.contains(query.column(2).getInt64())) {
            names[query.column(0).getInt64()].append(Sql::text(query.column(1)));
        }
    }
    return names;
}

QString textOrNothing(const SQLite::Column& column)
{
    return column.isText() ? Sql::text(column) : QString();
}

std::optional<double> realOrNothing(const SQLite::Column& column)
{
    return column.isInteger() || column.isFloat() ? std::optional<double>(column.getDouble())
                                                  : std::nullopt;
}

std::optional<int> integerOrNothing(const SQLite::Column& column)
{
    return column.isInteger() || column.isFloat() ? std::optional<int>(column.getInt())
                                                  : std::nullopt;
}

/// The number; where there is none, 0 and a note of it.
template <typename Number>
Number numberOf(const std::optional<Number>& number, bool& unknown)
{
    unknown = !number.has_value();
    return number.value_or(Number{});
}

/// Bytes of a file, readable or not; nothing where there is none.
std::optional<qint64> bytesOnDisk(const QString& path)
{
    struct stat status = {};
    if (path.isEmpty()) {
        return std::nullopt;
    }
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        // A folder that is closed to this user does not say that the file is gone.
        return errno == EACCES ? std::optional<qint64>(0) : std::nullopt;
    }
    return S_ISREG(status.st_mode) ? std::optional<qint64>(status.st_size) : std::nullopt;
}

/// Whether the effective user may read the file, as open() will be told.
bool mayBeRead(const QString& path)
{
    return ::faccessat(AT_FDCWD, QFile::encodeName(path).constData(), R_OK, AT_EACCESS) == 0;
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
        photo.guid = textOrNothing(next());
        photo.masterGuid = textOrNothing(next());
        photo.fileName = textOrNothing(next());
        photo.name = textOrNothing(next());
        photo.comment = textOrNothing(next());
        photo.rating = numberOf(integerOrNothing(next()), photo.unknown.rating);
    }

    void readPlaceAndTime(PhotoFacts& photo)
    {
        photo.date = numberOf(realOrNothing(next()), photo.unknown.date);
        photo.zoneName = textOrNothing(next());
        photo.width = numberOf(integerOrNothing(next()), photo.unknown.width);
        photo.height = numberOf(integerOrNothing(next()), photo.unknown.height);
        photo.latitude = realOrNothing(next());
        photo.longitude = realOrNothing(next());
        photo.altitude = realOrNothing(next());
    }

    void readFiles(PhotoFacts& photo)
    {
        const QString imagePath = textOrNothing(next());
        const bool isReference = next().getInt() != 0;
        photo.raw = next().getInt() != 0;
        photo.movie = textOrNothing(next()) == "VIDT"_L1;
        photo.edited = next().getInt() != 0;
        photo.hidden = next().getInt() != 0;
        const SQLite::Column previewColumn = next();
        const bool hasNoPreview = previewColumn.isNull();
        const QString preview = textOrNothing(previewColumn);
        const QString thumbnail = textOrNothing(next());
        photo.rollId = next().getInt64();
        photo.rollName = textOrNothing(next());
        photo.originalPath = PathMapping::master(m_package, imagePath, isReference);
        photo.previewPath = PathMapping::inside(m_package, "Previews"_L1, preview);
        photo.imagePath = hasNoPreview ? photo.originalPath : photo.previewPath;
        photo.thumbnailPath = PathMapping::inside(m_package, "Thumbnails"_L1, thumbnail);
        const std::optional<double> rotation = realOrNothing(next());
        const std::optional<double> importedRotation = realOrNothing(next());
        photo.rotated = rotation && importedRotation && *rotation != *importedRotation;
        const std::optional<qint64> bytes = bytesOnDisk(photo.originalPath);
        photo.missing = !bytes.has_value();
        photo.unreadable = !photo.missing && !mayBeRead(photo.originalPath);
        photo.bytes = bytes.value_or(0);
        const QString alternate = textOrNothing(next());
        const bool alternateIsReference = next().getInt() != 0;
        if (m_inTrash && !alternate.isNull()) {
            const QString path = PathMapping::master(m_package, alternate, alternateIsReference);
            photo.bytes += bytesOnDisk(path).value_or(0);
        }
    }

    QString m_package;
    Sql::Query& m_query;
    bool m_inTrash;
    int m_index{0};
};

QList<PhotoFacts> readPhotos(Connection& connection, bool inTrash)
{
    const NamesByPhoto keywords = keywordsByPhoto(connection);
    const NamesByPhoto albums = albumsByPhoto(connection);
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

/// Whether the photo was filed from an original. A library that knew a keyword in other letters
/// keeps its own spelling, and the picture that defines the keywords carries both.
bool isCopy(const PhotoFacts& photo)
{
    return photo.keywords.contains(u"Corvane Processed"_s, Qt::CaseInsensitive) &&
           !photo.keywords.contains(u"Corvane Original"_s, Qt::CaseInsensitive);
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
    if (unknown.date || !std::isfinite(unix) || std::abs(unix) > kFarthest) {
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

QList<qint64> LibraryReader::regularAlbums(Connection& connection)
{
    return Sql::integers(connection, kRegularAlbums, QVariant());
}

bool LibraryReader::isRegularAlbum(Connection& connection, qint64 id)
{
    return Sql::firstInteger(connection, kRegularAlbums, id).has_value();
}

LibrarySummary LibraryReader::summary(Connection& connection, const QSet<QString>& namedFiles)
{
    LibrarySummary summary;
    QSet<qint64> rolls;
    for (const PhotoFacts& photo : photos(connection)) {
        if (photo.hidden || photo.movie) {
            continue;
        }
        ++summary.photos;
        rolls.insert(photo.rollId);
        summary.missing += photo.missing ? 1 : 0;
        if (photo.raw) {
            ++summary.rawPhotos;
            summary.rawBytes += photo.bytes;
        }
        summary.processedPhotos += isCopy(photo) ? 1 : 0;
    }
    for (const PhotoFacts& photo : trashedPhotos(connection)) {
        ++summary.trashedPhotos;
        summary.trashedBytes += photo.bytes;
    }
    const QList<qint64> events = Sql::integers(
        connection,
        "SELECT modelId FROM RKFolder WHERE folderType = 2 AND isMagic = 0 AND isInTrash = 0");
    summary.rolls = static_cast<int>(
        std::ranges::count_if(events, [&rolls](qint64 id) { return rolls.contains(id); }));
    summary.albums = static_cast<int>(regularAlbums(connection).size());
    summary.keywords = count(connection, "SELECT count(*) FROM RKKeyword");
    summary.problems = IntegrityCheck::problems(connection, namedFiles);
    summary.writable =
        isWritable(connection) &&
        (summary.problems.isEmpty() || IntegrityCheck::ofDatabases(connection).isEmpty());
    return summary;
}
