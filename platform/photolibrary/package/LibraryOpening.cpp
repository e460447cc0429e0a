#include "LibraryOpening.h"

#include "AdminData.h"
#include "ForeignUse.h"
#include "HotJournals.h"
#include "IntegrityCheck.h"
#include "LibraryErrors.h"
#include "LibraryRestore.h"
#include "LooseRows.h"
#include "OpeningChecks.h"
#include "PhotoLibraryPrivate.h"
#include "Recovery.h"
#include "StateFolder.h"
#include "SystemLog.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace
{

/// How long another program's lock is waited for before the library counts as in use.
constexpr int kOpeningBusyMilliseconds = 2000;

WriteAccess::Places placesOf(Connection& connection)
{
    return WriteAccess::Places::of(connection.packagePath(),
                                   AdminData::text(connection, u"database"_s, u"databaseUuid"_s));
}

QString beingWritten(const QString& package, const QString& writer)
{
    return u"Another Corvane writes to the library \"%1\" (%2): it is only read here, and what is "
           "shown may change."_s.arg(package, writer);
}

Error notSound(const QString& package, const QStringList& problems, const QString& remedy)
{
    const QString count =
        problems.size() == 1 ? u"is 1 problem"_s : u"are %1 problems"_s.arg(problems.size());
    return {ErrorCode::Damaged,
            u"The library \"%1\" does not pass its integrity check, so it is not written to. There "
            "%2, which \"corvane-cli verify\" lists; the first: %3 %4"_s.arg(
                package, count, problems.first(), remedy)};
}

QString notRemoved(const QString& package, const QList<PackageFiles::NotRemoved>& left)
{
    return u"These files in the library \"%1\" belong to no photo any more but could not be "
           u"removed; "
           "the next run tries again, make their folders writable:\n%2"_s.arg(
               package, PackageFiles::listed(left));
}

/// What helps a library that a crash left unsound.
QString remedyAfterCrash(Connection& connection)
{
    const QList<Finding> rows = LooseRows::findings(connection);
    const bool mayBeMendedHere =
        std::ranges::all_of(rows, [](const Finding& row) { return row.repairable; });
    return mayBeMendedHere
               ? u"Mend it first: \"corvane-cli verify --repair --after-crash\" does what follows "
                 "from the databases and names what is left; move files that belong to no photo "
                 "out of it. Or open it in iPhoto and quit."_s
               : u"Only iPhoto can mend rows that are lost: open it in iPhoto and quit, or restore "
                 "it from a backup."_s;
}

/// Databases that nobody changed since this program checked and left them are not read whole again
/// for their indexes.
Result<void> checkForWriting(Connection& connection,
                             const OpenOptions& options,
                             const QList<JournaledTurn>& turns,
                             bool areAsLeft)
{
    const QString& package = connection.packagePath();
    if (Result<void> schema = OpeningChecks::writableSchema(connection); !schema.ok()) {
        return schema;
    }
    const Connection::Interruptible interruptible(connection, options.shouldStop);
    const bool clean = OpeningChecks::closedClean(connection);
    if (!clean && !options.afterCrash) {
        return OpeningChecks::notClosed(package);
    }
    if (options.forRepair) {
        const QList<Finding> damages = IntegrityCheck::ofForm(connection);
        return damages.isEmpty()
                   ? Result<void>()
                   : notSound(package, {damages.first().what}, u"Restore it from a backup."_s);
    }
    const QStringList problems = IntegrityCheck::ofDatabases(
        connection,
        areAsLeft && clean ? IntegrityCheck::Depth::Rows : IntegrityCheck::Depth::Indexes);
    if (!problems.isEmpty()) {
        return notSound(package,
                        problems,
                        u"Library > Verify Library, or \"corvane-cli verify --repair\", mends what "
                        "follows from the rest. Or let "
                        "iPhoto repair it, or restore it from a backup."_s);
    }
    const QStringList left =
        clean ? QStringList() : IntegrityCheck::ofCrash(connection, Recovery::named(turns));
    return left.isEmpty() ? Result<void>() : notSound(package, left, remedyAfterCrash(connection));
}

struct Recovered {
    Recovery::Outcome outcome;
    ForeignUse::Traces found; ///< what was checked: others may write while the lock is waited for
};

/// With the write lock of the databases: what a crash left is cleared away.
Result<Recovered>
recovered(Connection& connection, const OpenOptions& options, const QString& stateFolder)
{
    connection.beginImmediate();
    const ForeignUse::Traces found = ForeignUse::tracesOf(connection.packagePath());
    const QList<JournaledTurn> turns = LibraryRestore::turns(connection.packagePath(), stateFolder);
    const Result<void> checked =
        checkForWriting(connection, options, turns, ForeignUse::areAsLeft(stateFolder, found));
    if (!checked.ok()) {
        connection.rollback();
        return checked.error();
    }
    Changes lagging;
    lagging.catalogues = LibraryRestore::isInPlace(connection.packagePath(), stateFolder);
    Recovered done{Recovery::run(connection, turns, lagging), found};
    connection.rollback();
    return done;
}

/// `cutOff`: the databases as they were where the opening had a transaction to undo.
Result<std::shared_ptr<PhotoLibraryPrivate>>
openForWriting(std::unique_ptr<Connection> connection,
               const OpenOptions& options,
               const QString& version,
               const std::optional<ForeignUse::Traces>& cutOff)
{
    if (const Result<void> known = StateFolder::isKnown(connection->packagePath()); !known.ok()) {
        return known.error();
    }
    const WriteAccess::Places places = placesOf(*connection);
    Result<std::unique_ptr<LibraryLock>> lock = LibraryLock::take(places.package, places.state);
    if (!lock.ok()) {
        return lock.error();
    }
    if (!lock.value()->leftBehind().isEmpty()) {
        systemLog(u"The library \"%1\" was not closed by %2."_s.arg(places.package,
                                                                    lock.value()->leftBehind()));
    }
    const Result<Recovered> done = recovered(*connection, options, places.state);
    if (!done.ok()) {
        return done.error();
    }
    const Recovery::Outcome& outcome = done.value().outcome;
    const ForeignUse::Traces& found = done.value().found;
    // Undoing a transaction is a change by this program.
    const ForeignUse::Warnings warnings =
        ForeignUse::warnings(places.package, places.state, cutOff.value_or(found));
    const Result<QString> swept = LibraryRestore::sweep(places.package, places.state);
    if (!swept.ok()) {
        return swept.error();
    }
    connection->database().setBusyTimeout(Connection::kBusyMilliseconds);
    connection->database().exec("PRAGMA cache_spill=OFF");
    const Result<WriteAccessPtr> write =
        WriteAccess::open(places, std::move(lock).value(), found.print);
    if (!write.ok()) {
        return write.error();
    }
    write.value()->addUnsettled(outcome.unsettled);
    write.value()->addPending(outcome.changes);
    auto library = std::make_shared<PhotoLibraryPrivate>(
        places, version, std::move(connection), write.value());
    QStringList lasting = warnings.lasting;
    if (!outcome.notRemoved.isEmpty()) {
        lasting << notRemoved(places.package, outcome.notRemoved);
    }
    if (!swept.value().isNull()) {
        lasting << swept.value();
    }
    library->setPassingWarning(warnings.passing, warnings.milliseconds);
    const Result<void> followed = library->synchronise();
    if (!followed.ok()) {
        // They are tried again at the end; the databases are what counts.
        lasting << followed.error().message;
    }
    if (LibraryRestore::isInPlace(places.package, places.state) &&
        (followed.ok() || LibraryErrors::isLeftAlone(followed))) {
        lasting += LibraryRestore::followed(places.package, places.state);
    }
    library->setWarnings(lasting);
    return library;
}

} // namespace

Result<std::shared_ptr<PhotoLibraryPrivate>> LibraryOpening::open(const QString& path,
                                                                  const OpenOptions& options)
{
    const QString package = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    LibraryRestore::resume(package);
    const Result<QString> version = OpeningChecks::recognise(package);
    if (!version.ok()) {
        return version.error();
    }
    const bool forWriting = options.access == Access::Write;
    if (forWriting) {
        if (const Result<void> permitted = OpeningChecks::permissions(package); !permitted.ok()) {
            return permitted.error();
        }
        if (const Result<void> own = OpeningChecks::ownDatabases(package); !own.ok()) {
            return own.error();
        }
    }
    std::optional<ForeignUse::Traces> cutOff;
    if (HotJournals::areThere(package)) {
        cutOff = ForeignUse::tracesOf(package);
    }
    Result<std::unique_ptr<Connection>> connection =
        Connection::open(package,
                         forWriting ? Connection::Mode::Write : Connection::Mode::Read,
                         kOpeningBusyMilliseconds);
    if (!connection.ok()) {
        return connection.error();
    }
    connection.value()->setVolumeFolders(options.volumeFolders);
    return LibraryErrors::caught(package, [&]() -> Result<std::shared_ptr<PhotoLibraryPrivate>> {
        const Result<void> readable = OpeningChecks::readable(*connection.value());
        if (!readable.ok()) {
            return readable.error();
        }
        if (forWriting) {
            return openForWriting(std::move(connection).value(), options, version.value(), cutOff);
        }
        const WriteAccess::Places places = placesOf(*connection.value());
        connection.value()->database().setBusyTimeout(Connection::kBusyMilliseconds);
        auto library = std::make_shared<PhotoLibraryPrivate>(
            places, version.value(), std::move(connection).value(), nullptr);
        const QString writer = LibraryLock::holder(places.package, places.state);
        if (!writer.isEmpty()) {
            library->setWarnings({beingWritten(package, writer)});
        }
        return library;
    });
}
