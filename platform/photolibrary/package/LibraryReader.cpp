#include "LibraryReader.h"

#include "IntegrityCheck.h"
#include "OpeningChecks.h"
#include "PhotoListing.h"
#include "Queries.h"
#include "RegularAlbums.h"

#include <QSet>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace
{

QList<PhotoFacts> readPhotos(Connection& connection, bool inTrash)
{
    std::optional<PhotoListing> listing;
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

QList<PhotoFacts> LibraryReader::photos(Connection& connection)
{
    return readPhotos(connection, false);
}

QList<PhotoFacts> LibraryReader::trashedPhotos(Connection& connection)
{
    return readPhotos(connection, true);
}

LibrarySummary LibraryReader::summary(Connection& connection, const NamedFiles& namedFiles)
{
    LibrarySummary summary;
    std::optional<PhotoListing> shown;
    std::optional<PhotoListing> trashed;
    QList<qint64> events;
    {
        const Connection::Snapshot snapshot(connection);
        shown.emplace(connection, false);
        trashed.emplace(connection, true);
        events = Sql::integers(
            connection,
            "SELECT modelId FROM RKFolder WHERE folderType = 2 AND isMagic = 0 AND isInTrash = 0");
        summary.albums = static_cast<int>(RegularAlbums::ids(connection).size());
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
