#include "PhotoListing.h"

#include "AlternateSignalStack.h"
#include "ColumnValues.h"
#include "MastersOfPhoto.h"
#include "PathMapping.h"
#include "PhotoTables.h"
#include "Queries.h"
#include "RoomyCache.h"
#include "Volumes.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <optional>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ColumnValues;

namespace
{

/// The sign keeps SQLite from going to nearly all rows by way of an index.
constexpr const char* kListedPhotos =
    "SELECT modelId, uuid, coalesce(rawMasterUuid, masterUuid), name, mainRating, imageDate,"
    " imageTimeZoneName, processedWidth, processedHeight, exifLatitude, exifLongitude,"
    " hasEnabledAdjustments, isHidden, rotation, projectUuid"
    " FROM RKVersion WHERE showInLibrary = 1 AND +isInTrash = ?";

constexpr const char* kAnyPhoto =
    "SELECT modelId FROM RKVersion WHERE showInLibrary = 1 AND isInTrash = ? LIMIT 1";

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
    PhotoReader(Sql::Query& query, const PhotoTables& tables)
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
    const PhotoTables& m_tables;
    int m_index{0};
};

/// The masters that go when a photo in the trash is deleted: none that is shown elsewhere.
QList<const MasterRow*> doomedWith(Connection& connection, qint64 photo, const PhotoTables& tables)
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
    FileFinder(QString package, const PhotoTables& tables, bool inTrash)
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
    const PhotoTables& m_tables;
    bool m_inTrash;
};

} // namespace

class PhotoListing::Private final
{
public:
    Private(Connection& connection, bool inTrash)
    {
        if (!Sql::firstInteger(connection, kAnyPhoto, inTrash ? 1 : 0)) {
            return; // often the trash
        }
        const RoomyCache cache(connection);
        m_tables = PhotoTables::read(connection);
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

    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;

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

    PhotoTables m_tables;
    std::deque<std::vector<ListedPhoto>> m_chunks{1}; // a full one stays where it is
    std::optional<FileFinder> m_finder;
    std::future<void> m_finding; // waits for its end when it goes
};

PhotoListing::PhotoListing(Connection& connection, bool inTrash)
    : m_private(std::make_unique<Private>(connection, inTrash))
{
}

PhotoListing::~PhotoListing() = default;

QList<PhotoFacts> PhotoListing::take()
{
    return m_private->take();
}
