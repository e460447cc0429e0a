#include "DerivedRows.h"
#include "FuzzLibrary.h"
#include "FuzzTarget.h"
#include "LibraryReader.h"
#include "LibraryVerification.h"
#include "ModelIds.h"
#include "OpeningChecks.h"
#include "PackageFiles.h"
#include "Queries.h"
#include "RowChanges.h"
#include "TrashRows.h"

#include <array>
#include <functional>

using namespace Qt::StringLiterals;

namespace
{

/// Where no path of a database may lead out of: what it is relative to.
void requireBelow(const QString& root, const QString& path)
{
    requireHolds(path.startsWith(root + u'/') && !(path + u'/').contains("/../"_L1) &&
                 !path.contains(QChar(u'\0')));
}

void requireInside(const PhotoFacts& photo)
{
    const FuzzLibrary& library = FuzzLibrary::instance();
    if (!photo.originalPath.isEmpty()) {
        const bool isOnDisk = photo.originalPath.startsWith(library.disk() + u'/');
        requireBelow(isOnDisk ? library.disk() : library.package() + u"/Masters"_s,
                     photo.originalPath);
    }
    if (!photo.previewPath.isEmpty()) {
        requireBelow(library.package() + u"/Previews"_s, photo.previewPath);
    }
    if (!photo.thumbnailPath.isEmpty()) {
        requireBelow(library.package() + u"/Thumbnails"_s, photo.thumbnailPath);
    }
    static_cast<void>(photo.wallClock());
}

void requireInside(const QStringList& paths)
{
    const QStringList roots{
        u"Masters/"_s, u"Previews/"_s, u"Thumbnails/"_s, u"Database/Versions/"_s};
    for (const QString& path : paths) {
        requireHolds(PackageFiles::isInside(path));
        requireHolds(std::any_of(roots.begin(), roots.end(), [&path](const QString& root) {
            return path.startsWith(root);
        }));
    }
}

/// What SQLite or the program itself refuses is no fault.
void attempt(const std::function<void()>& work)
{
    try {
        work();
    } catch (const SQLite::Exception&) {
        FuzzLibrary::instance().connection().resetStatements();
    }
}

void readAll(Connection& connection)
{
    attempt([&] { static_cast<void>(OpeningChecks::readable(connection).ok()); });
    attempt([&] {
        for (const PhotoFacts& photo : LibraryReader::photos(connection)) {
            requireInside(photo);
        }
        for (const PhotoFacts& photo : LibraryReader::trashedPhotos(connection)) {
            requireInside(photo);
        }
    });
}

void checkAll(Connection& connection)
{
    attempt([&] { static_cast<void>(OpeningChecks::writableSchema(connection).ok()); });
    attempt([&] { static_cast<void>(LibraryReader::summary(connection, {})); });
    attempt([&] { static_cast<void>(LibraryVerification::findings(connection, {}, {})); });
}

void changeAll(Connection& connection)
{
    Changes changes;
    Writer writer{connection, changes, 800000000.0};
    attempt([&] { ModelIds::mend(writer); });
    attempt([&] { DerivedRows::mend(writer); });
    const QList<qint64> ids = Sql::integers(connection, "SELECT modelId FROM RKVersion");
    attempt([&] { static_cast<void>(TrashRows::restore(writer, ids)); });
    attempt([&] { static_cast<void>(TrashRows::moveToTrash(writer, ids)); });
    attempt([&] {
        const TrashRows::Leftovers leftovers = TrashRows::deleteForGood(writer, ids);
        requireInside(leftovers.files);
        requireInside(leftovers.folders);
        requireInside(leftovers.emptyFolders);
    });
}

} // namespace

/// Whatever stands in the rows of a library, it is read, checked and changed without a crash, and
/// no file outside of the package is taken for one of it. The first byte says which of that is
/// done.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Connection& connection = FuzzLibrary::instance().connection();
    static RowChanges changes(connection);
    static constexpr std::array kUses{readAll, checkAll, changeAll};
    FuzzInput input(data, size);
    const auto use = kUses.at(input.byte() % kUses.size());
    connection.beginImmediate();
    changes.apply(input);
    attempt([&] { use(connection); });
    connection.rollback();
    return 0;
}
