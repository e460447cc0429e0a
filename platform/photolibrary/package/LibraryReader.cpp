#include "LibraryReader.h"

#include "AlternateSignalStack.h"
#include "FoldersInTrash.h"
#include "IntegrityCheck.h"
#include "MastersOfPhoto.h"
#include "OpeningChecks.h"
#include "PathMapping.h"
#include "Queries.h"
#include "RoomyCache.h"
#include "RowQuestions.h"
#include "Volumes.h"
#include "WallClock.h"

#include <QDateTime>
#include <QFile>
#include <QHash>
#include <QSet>
#include <QVariant>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <functional>
#include <future>
#include <optional>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

/// A listing reads each table once from begin to end and joins them in memory: looking up every
/// photo's rows in SQLite's indexes takes thrice as long.
/// The sign keeps SQLite from going to nearly all rows by way of an index.
constexpr const char* kListedPhotos =
    "SELECT modelId, uuid, coalesce(rawMasterUuid, masterUuid), name, mainRating, imageDate,"
    " imageTimeZoneName, processedWidth, processedHeight, exifLatitude, exifLongitude,"
    " hasEnabledAdjustments, isHidden, rotation, projectUuid"
    " FROM RKVersion WHERE showInLibrary = 1 AND +isInTrash = ?";

constexpr const char* kAnyPhoto =
    "SELECT modelId FROM RKVersion WHERE showInLibrary = 1 AND isInTrash = ? LIMIT 1";

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

QList<qint64> regularAlbumsOf(Connection& connection, const QVariant& id)
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

/// Names by photo: keywords or albums.
using NamesByPhoto = QHash<qint64, QStringList>;

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
    const QList<qint64> ids = LibraryReader::regularAlbums(connection);
    const QSet<qint64> regular(ids.begin(), ids.end());
    QHash<qint64, QString> names;
    for (Sql::Query query(connection, "SELECT modelId, name FROM RKAlbum"); query.next();) {
        if (const qint64 id = query.column(0).getInt64(); regular.contains(id)) {
            names.insert(id, Sql::text(query.column(1)));
        }
    }
    return namesByPhoto(connection, "SELECT versionId, albumId FROM RKAlbumVersion", names);
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

/// A master as it is on the disk.
struct FileFacts {
    bool isThere{false};
    bool mayBeRead{false};
    qint64 bytes{0};
};

FileFacts factsOfFile(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (path.isEmpty()) {
        return {};
    }
    if (::stat(name.constData(), &status) != 0) {
        // A folder that is closed to this user does not say that the file is gone.
        return {.isThere = errno == EACCES};
    }
    if (!S_ISREG(status.st_mode)) {
        return {};
    }
    constexpr mode_t kReadByAll = S_IRUSR | S_IRGRP | S_IROTH;
    const bool mayBeRead =
        (status.st_mode & kReadByAll) == kReadByAll ||
        ::faccessat(AT_FDCWD, name.constData(), R_OK, AT_EACCESS) == 0; // as open() will be told
    return {.isThere = true, .mayBeRead = mayBeRead, .bytes = status.st_size};
}

struct MasterRow {
    QString fileName;
    QString imagePath;
    bool isReference{false};
    bool isRaw{false};
    bool isMovie{false};
    QString originalVersionUuid;
    QString volumeUuid;
};

struct EventRow {
    qint64 id{0};
    QString name;
    std::optional<double> date; ///< of its first photo
};

struct ProxyRow {
    bool hasPreview{false}; ///< also where its path is of an unexpected type
    QString preview;
    QString miniature;
};

/// What the rows of photos refer to, by uuid or by id.
struct Tables {
    QHash<QString, MasterRow> masters;
    QHash<QString, std::optional<double>> rotationsAsImported;
    QHash<QString, EventRow> events;
    QHash<QString, ProxyRow> proxies;
    QHash<qint64, QString> comments;
    QHash<qint64, double> altitudes;
    NamesByPhoto keywords;
    QSet<qint64> keywordLosers;
    NamesByPhoto albums;
    QHash<QString, Volumes::Volume> volumes;
};

void readMasters(Connection& connection, Tables& tables)
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

void readEventsAndProxies(Connection& connection, Tables& tables)
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

void readProperties(Connection& connection, Tables& tables)
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

Tables readTables(Connection& connection)
{
    Tables tables;
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

/// A photo on its way into a listing.
struct ListedPhoto {
    PhotoFacts facts;
    std::optional<double> eventDate; ///< by which the events are ordered
    const MasterRow* master{nullptr};
    const ProxyRow* proxy{nullptr}; ///< null: there is none
    QList<const MasterRow*> doomed; ///< of a photo in the trash: what is deleted with it

    /// Its place: by event, the earliest first, then by date; what has no date comes first.
    [[nodiscard]] auto place() const
    {
        return std::tuple(eventDate, facts.rollId, !facts.unknown.date, facts.date, facts.id);
    }
};

/// Reads the columns of kListedPhotos one after another, and what its tables say of the photo.
class PhotoReader final
{
public:
    PhotoReader(Sql::Query& query, const Tables& tables)
        : m_query(query)
        , m_tables(tables)
    {
    }

    /// All but what lies on the disk. Nothing where the photo has no master.
    [[nodiscard]] std::optional<ListedPhoto> read()
    {
        ListedPhoto listed;
        PhotoFacts& photo = listed.facts;
        readIdentity(photo);
        const auto master = m_tables.masters.constFind(photo.masterGuid);
        if (master == m_tables.masters.cend()) {
            return std::nullopt;
        }
        listed.master = &*master;
        readPlaceAndTime(photo);
        photo.edited = next().getInt() != 0;
        photo.hidden = next().getInt() != 0;
        const std::optional<double> rotation = realOrNothing(next());
        const std::optional<double> imported =
            m_tables.rotationsAsImported.value(master->originalVersionUuid, 0.0);
        photo.rotated = rotation && imported && *rotation != *imported;
        const EventRow event = m_tables.events.value(textOrNothing(next()));
        photo.rollId = event.id;
        photo.rollName = event.name;
        listed.eventDate = event.date;
        photo.fileName = master->fileName;
        photo.raw = master->isRaw;
        photo.movie = master->isMovie;
        const auto proxy = m_tables.proxies.constFind(photo.guid);
        listed.proxy = proxy == m_tables.proxies.cend() ? nullptr : &*proxy;
        takeTexts(photo);
        return listed;
    }

private:
    SQLite::Column next() { return m_query.column(m_index++); }

    void readIdentity(PhotoFacts& photo)
    {
        photo.id = next().getInt64();
        photo.guid = textOrNothing(next());
        photo.masterGuid = textOrNothing(next());
        photo.name = textOrNothing(next());
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
    }

    void takeTexts(PhotoFacts& photo) const
    {
        photo.keywords = m_tables.keywords.value(photo.id);
        photo.keywords.sort(Qt::CaseInsensitive);
        photo.losesKeyword = m_tables.keywordLosers.contains(photo.id);
        photo.albums = m_tables.albums.value(photo.id);
        photo.albums.sort(Qt::CaseInsensitive);
        photo.comment = m_tables.comments.value(photo.id);
        const auto altitude = m_tables.altitudes.constFind(photo.id);
        if (altitude != m_tables.altitudes.cend()) {
            photo.altitude = *altitude;
        }
    }

    Sql::Query& m_query;
    const Tables& m_tables;
    int m_index{0};
};

/// The masters that go when a photo in the trash is deleted: none that is shown elsewhere.
QList<const MasterRow*> doomedWith(Connection& connection, qint64 photo, const Tables& tables)
{
    QList<const MasterRow*> doomed;
    const QStringList masters = MastersOfPhoto::of(connection, photo);
    for (const QString& master : masters) {
        const auto row = tables.masters.constFind(master);
        if (row != tables.masters.cend() && !MastersOfPhoto::isShown(connection, master)) {
            doomed.append(&*row);
        }
    }
    return doomed;
}

/// Finds the files of photos on the disk. Any thread, each photo in one.
class FileFinder final
{
public:
    FileFinder(QString package, const Tables& tables, bool inTrash)
        : m_package(std::move(package))
        , m_tables(tables)
        , m_inTrash(inTrash)
    {
    }

    void find(std::span<ListedPhoto> photos) const
    {
        for (ListedPhoto& photo : photos) {
            findMaster(photo.facts, *photo.master);
            if (m_inTrash) {
                photo.facts.bytes = bytesOf(photo.doomed);
            }
            findPictures(photo.facts, photo.proxy == nullptr ? ProxyRow() : *photo.proxy);
        }
    }

private:
    void findMaster(PhotoFacts& photo, const MasterRow& master) const
    {
        photo.originalPath = pathOf(master);
        photo.volume = master.isReference ? volumeOf(master).name : QString();
        const FileFacts file = factsOfFile(photo.originalPath);
        photo.missing = !file.isThere;
        photo.unreadable = file.isThere && !file.mayBeRead;
        photo.bytes = file.bytes;
    }

    /// What lies outside of the library is not deleted.
    [[nodiscard]] qint64 bytesOf(const QList<const MasterRow*>& masters) const
    {
        qint64 bytes = 0;
        for (const MasterRow* const master : masters) {
            bytes += master->isReference ? 0 : factsOfFile(pathOf(*master)).bytes;
        }
        return bytes;
    }

    [[nodiscard]] Volumes::Volume volumeOf(const MasterRow& master) const
    {
        const Volumes::Volume unknown{master.volumeUuid, QString()};
        return m_tables.volumes.value(master.volumeUuid, unknown);
    }

    [[nodiscard]] QString pathOf(const MasterRow& master) const
    {
        return PathMapping::master(m_package,
                                   {master.imagePath,
                                    master.isReference,
                                    master.isReference ? volumeOf(master).folder : QString()});
    }

    void findPictures(PhotoFacts& photo, const ProxyRow& proxy) const
    {
        photo.previewPath = PathMapping::inside(m_package, "Previews"_L1, proxy.preview);
        photo.imagePath = proxy.hasPreview ? photo.previewPath : photo.originalPath;
        photo.thumbnailPath = PathMapping::inside(m_package, "Thumbnails"_L1, proxy.miniature);
    }

    QString m_package;
    const Tables& m_tables;
    bool m_inTrash;
};

/// The photos in or out of the trash. Their rows are read at once, for the snapshot of the caller;
/// their files are found on other threads meanwhile and afterwards, since a slow disk must not keep
/// a writer waiting.
class Listing final
{
public:
    Listing(Connection& connection, bool inTrash)
    {
        if (!Sql::firstInteger(connection, kAnyPhoto, inTrash ? 1 : 0)) {
            return; // often the trash
        }
        const RoomyCache cache(connection);
        m_tables = readTables(connection);
        m_finder.emplace(connection.packagePath(), m_tables, inTrash);
        Sql::Query query(connection, kListedPhotos, inTrash ? 1 : 0);
        while (query.next()) {
            if (std::optional<ListedPhoto> photo = PhotoReader(query, m_tables).read()) {
                if (inTrash) {
                    photo->doomed = doomedWith(connection, photo->facts.id, m_tables);
                }
                m_chunks.back().push_back(std::move(*photo));
            }
            if (m_chunks.back().size() == kChunk) {
                findLast();
                m_chunks.emplace_back();
            }
        }
        findLast();
    }

    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;

    /// By event, then by date. Waits for the files; once.
    [[nodiscard]] QList<PhotoFacts> take()
    {
        if (m_finding.valid()) {
            m_finding.get();
        }
        // Half a kilobyte each: moved once, to its place.
        std::vector<std::pair<decltype(ListedPhoto().place()), ListedPhoto*>> places;
        places.reserve(kChunk * m_chunks.size());
        for (std::vector<ListedPhoto>& chunk : m_chunks) {
            for (ListedPhoto& photo : chunk) {
                places.emplace_back(photo.place(), &photo);
            }
        }
        std::ranges::sort(places, std::less<>());
        QList<PhotoFacts> photos;
        photos.reserve(static_cast<qsizetype>(places.size()));
        for (const auto& [place, photo] : places) {
            photos.append(std::move(photo->facts));
        }
        return photos;
    }

private:
    static constexpr std::size_t kChunk = 4000;

    /// Begins to find the files of the last chunk, after those of the one before.
    void findLast()
    {
        m_finding = std::async(
            std::launch::async,
            [&finder = *m_finder, &chunk = m_chunks.back(), before = std::move(m_finding)] {
                const AlternateSignalStack signalStack;
                if (before.valid()) {
                    before.wait();
                }
                finder.find(chunk);
            });
    }

    Tables m_tables;
    std::deque<std::vector<ListedPhoto>> m_chunks{1}; // a full one stays where it is
    std::optional<FileFinder> m_finder;
    std::future<void> m_finding; // waits for its end when it goes
};

QList<PhotoFacts> readPhotos(Connection& connection, bool inTrash)
{
    std::optional<Listing> listing;
    {
        const Connection::Snapshot snapshot(connection);
        listing.emplace(connection, inTrash);
    }
    return listing->take();
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

/// Why an opening for writing would be refused; empty where it would not.
QString whyReadOnly(Connection& connection)
{
    const QString& package = connection.packagePath();
    for (const Result<void>& checked : {OpeningChecks::permissions(package),
                                        OpeningChecks::ownDatabases(package),
                                        OpeningChecks::writableSchema(connection)}) {
        if (!checked.ok()) {
            return checked.error().message;
        }
    }
    return OpeningChecks::closedClean(connection) ? QString()
                                                  : OpeningChecks::notClosed(package).message;
}

} // namespace

QString PhotoFacts::wallClock() const
{
    const QDateTime moment = unknown.date ? QDateTime() : WallClock::of(date, zoneName);
    return moment.isValid() ? moment.toString(u"yyyy-MM-ddTHH:mm:ss"_s) : QString();
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
    return regularAlbumsOf(connection, QVariant());
}

bool LibraryReader::isRegularAlbum(Connection& connection, qint64 id)
{
    return !regularAlbumsOf(connection, id).isEmpty();
}

LibrarySummary LibraryReader::summary(Connection& connection, const NamedFiles& namedFiles)
{
    LibrarySummary summary;
    std::optional<Listing> shown;
    std::optional<Listing> trashed;
    QList<qint64> events;
    {
        const Connection::Snapshot snapshot(connection);
        shown.emplace(connection, false);
        trashed.emplace(connection, true);
        events = Sql::integers(
            connection,
            "SELECT modelId FROM RKFolder WHERE folderType = 2 AND isMagic = 0 AND isInTrash = 0");
        summary.albums = static_cast<int>(regularAlbums(connection).size());
        summary.keywords = count(connection, "SELECT count(*) FROM RKKeyword");
    }
    QSet<qint64> rolls;
    for (const PhotoFacts& photo : shown->take()) {
        if (photo.hidden || photo.movie) {
            continue;
        }
        ++summary.photos;
        rolls.insert(photo.rollId);
        summary.missing += photo.missing ? 1 : 0;
        if (photo.missing && photo.originalPath.isEmpty() && !photo.volume.isEmpty()) {
            summary.offlineVolumes << photo.volume;
        }
        if (photo.raw) {
            ++summary.rawPhotos;
            summary.rawBytes += photo.bytes;
        }
        summary.processedPhotos += isCopy(photo) ? 1 : 0;
    }
    for (const PhotoFacts& photo : trashed->take()) {
        ++summary.trashedPhotos;
        summary.trashedBytes += photo.bytes;
    }
    summary.offlineVolumes.removeDuplicates();
    summary.offlineVolumes.sort(Qt::CaseInsensitive);
    summary.rolls = static_cast<int>(
        std::ranges::count_if(events, [&rolls](qint64 id) { return rolls.contains(id); }));
    summary.problems = IntegrityCheck::problems(connection, namedFiles);
    summary.whyReadOnly = whyReadOnly(connection);
    summary.writable =
        summary.whyReadOnly.isEmpty() &&
        (summary.problems.isEmpty() || IntegrityCheck::ofDatabases(connection).isEmpty());
    return summary;
}
