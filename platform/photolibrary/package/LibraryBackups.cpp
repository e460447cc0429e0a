#include "LibraryBackups.h"

#include "AdminData.h"
#include "Backup.h"
#include "Connection.h"
#include "ForeignUse.h"
#include "LibraryErrors.h"
#include "LibraryLock.h"
#include "LibraryRestore.h"
#include "OpeningChecks.h"
#include "PropertyList.h"
#include "Queries.h"
#include "StateFolder.h"
#include "StrayFiles.h"
#include "SystemLog.h"
#include "TurnJournal.h"
#include "WriteAccess.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

/// How long another program's lock is waited for.
constexpr int kBusyMilliseconds = 2000;

using ConnectionPtr = std::unique_ptr<Connection>;
using Places = WriteAccess::Places;

QString absolute(const QString& path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

/// The uuid of the databases, from a property list beside them where they do not tell; null where
/// neither does.
QString databaseUuid(const QString& package, Connection* connection)
{
    if (connection != nullptr) {
        const Result<QString> told = LibraryErrors::caught(package, [&]() -> Result<QString> {
            return AdminData::text(*connection, u"database"_s, u"databaseUuid"_s);
        });
        if (told.ok() && !told.value().isEmpty()) {
            return told.value();
        }
    }
    const Result<QVariant> list =
        PropertyList::read(package + "/Database/DataModelVersion.plist"_L1);
    return list.ok() ? list.value().toMap().value(u"databaseUuid"_s).toString() : QString();
}

/// Where lock and copies of a library lie, also of one whose databases are damaged or gone.
Places placesOf(const QString& package, Connection* connection)
{
    const QString uuid = databaseUuid(package, connection);
    if (!uuid.isEmpty()) {
        return Places::of(package, uuid);
    }
    const QStringList keys = StateFolder::keysWithBackups(QFileInfo(package).canonicalFilePath());
    return keys.size() == 1 ? Places{package,
                                     StateFolder::ofLibrary(keys.first()),
                                     StateFolder::ofBackups(keys.first())}
                            : Places::of(package, QString());
}

/// A connection, or none where the databases are damaged or gone. Errors: all others.
Result<ConnectionPtr> connectTo(const QString& package, Connection::Mode mode)
{
    Result<ConnectionPtr> opened = Connection::open(package, mode, kBusyMilliseconds);
    if (opened.ok()) {
        return opened;
    }
    const ErrorCode code = opened.error().code;
    if (code == ErrorCode::Damaged || code == ErrorCode::NotFound) {
        return ConnectionPtr();
    }
    return opened;
}

/// Whether the package may be asked for backups: a library, or what was one when they were made.
Result<void> isLibrary(const QString& package, const Places& places)
{
    const Result<QString> version = OpeningChecks::recognise(package);
    const bool hasBackups = QFileInfo(package).isDir() && !Backup::names(places.backups).isEmpty();
    return version.ok() || hasBackups ? Result<void>() : Result<void>(version.error());
}

LibraryBackup described(const QString& folder, const QString& name)
{
    LibraryBackup backup{name, folder + u'/' + name, Backup::momentOf(name), 0, std::nullopt};
    const QStringList parts = Backup::parts(backup.path);
    for (const QString& part : parts) {
        backup.bytes += QFileInfo(backup.path + u'/' + part).size();
    }
    const Result<ConnectionPtr> connection =
        Connection::open(backup.path, Connection::Mode::Read, kBusyMilliseconds);
    const Result<qint64> photos =
        connection.ok() ? LibraryErrors::caught(
                              backup.path,
                              [&]() -> Result<qint64> {
                                  return Sql::firstInteger(*connection.value(),
                                                           "SELECT count(*) FROM RKVersion WHERE"
                                                           " showInLibrary = 1 AND isInTrash = 0")
                                      .value_or(0);
                              })
                        : Result<qint64>(connection.error());
    if (photos.ok()) {
        backup.photos = photos.value();
    }
    return backup;
}

QString digitsOf(const QString& text)
{
    QString digits;
    for (const QChar letter : text) {
        if (letter.isDigit()) {
            digits += letter;
        }
    }
    return digits;
}

/// The copy that is meant.
Result<LibraryBackup> chosen(const Places& places, const QString& date)
{
    QStringList names = Backup::names(places.backups);
    const QString digits = digitsOf(date);
    if (!names.contains(date)) {
        names.removeIf([&digits](const QString& name) {
            return digits.isEmpty() || !digitsOf(name).startsWith(digits);
        });
    } else {
        names = {date};
    }
    if (names.size() != 1) {
        const QString what = names.isEmpty() ? u"no backup"_s : u"more than one backup"_s;
        return Error{ErrorCode::NotFound,
                     u"Of the library \"%1\" there is %2 of the date \"%3\": choose one that "
                     "\"corvane-cli backup --list\" names."_s.arg(places.package, what, date)};
    }
    return described(places.backups, names.first());
}

/// Whether nobody else has the library open, as far as that can be told.
Result<void> isFree(Connection& connection, bool afterCrash)
{
    const QString& package = connection.packagePath();
    return LibraryErrors::caught(package, [&]() -> Result<void> {
        connection.database().exec("BEGIN EXCLUSIVE"); // nobody reads
        connection.rollback();
        connection.beginImmediate();
        if (!afterCrash && !OpeningChecks::closedClean(connection)) {
            return Error{
                ErrorCode::NotClosed,
                u"The library \"%1\" is open in iPhoto, or iPhoto did not close it properly. Quit "
                "iPhoto. If it is open nowhere, --after-crash restores it all the same."_s.arg(
                    package)};
        }
        return {};
    });
}

/// The lock of the databases that are there, as long as it lives; none where they are damaged.
Result<ConnectionPtr> lockedDatabases(const QString& package, bool afterCrash)
{
    Result<ConnectionPtr> connection = connectTo(package, Connection::Mode::Write);
    if (!connection.ok() || connection.value() == nullptr) {
        return connection;
    }
    const Result<void> free = isFree(*connection.value(), afterCrash);
    if (free.ok()) {
        return connection;
    }
    return free.error().code == ErrorCode::Damaged ? Result<ConnectionPtr>(ConnectionPtr())
                                                   : Result<ConnectionPtr>(free.error());
}

/// Clears away what the exchange left, or what was to be exchanged; then the journal says no more
/// of the databases before. Where that fails, or catalogues lag, the next opening for writing goes
/// on. Returns a sentence for each thing that could not be done.
QStringList clearAway(const Places& places, const Result<QStringList>& lagging)
{
    const Result<QString> swept = LibraryRestore::sweep(places.package, places.state);
    if (!swept.ok()) {
        return {swept.error().message};
    }
    QStringList undone;
    if (!swept.value().isNull()) {
        undone << swept.value();
    }
    if (!lagging.ok()) {
        return undone;
    }
    const Result<std::unique_ptr<TurnJournal>> journal = TurnJournal::open(places.state);
    const Result<void> forgotten = journal.ok()
                                       ? journal.value()->clearBut({}, {})
                                       : StateFolder::unusable(journal.error(), places.package);
    if (!forgotten.ok()) {
        undone << forgotten.error().message;
    } else if (lagging.value().isEmpty()) {
        undone += LibraryRestore::followed(places.package, places.state);
    }
    return undone;
}

/// Originals in the package that its databases do not know.
Result<QStringList> unknownOriginals(const QString& package)
{
    const Result<ConnectionPtr> connection =
        Connection::open(package, Connection::Mode::Read, kBusyMilliseconds);
    if (!connection.ok()) {
        return connection.error();
    }
    return LibraryErrors::caught(package, [&]() -> Result<QStringList> {
        QStringList originals = StrayFiles::inMasters(*connection.value(), {});
        for (QString& path : originals) {
            path.prepend("Masters/"_L1);
        }
        return originals;
    });
}

void tellKept(const QString& package, LibraryBackups::Restored& restored)
{
    const Result<QStringList> kept = unknownOriginals(package);
    if (kept.ok()) {
        restored.kept = kept.value();
        return;
    }
    restored.lagging << u"Which files in the library belong to no photo of it now is not known: "
                        "%1"_s.arg(LibraryErrors::asSentence(kept.error().message));
}

/// With the writer's lock: stages, copies what is there, swaps.
Result<LibraryBackups::Restored>
replaced(const Places& places, const LibraryBackup& from, bool afterCrash)
{
    const QString& package = places.package;
    Result<ConnectionPtr> locked = lockedDatabases(package, afterCrash);
    if (!locked.ok()) {
        return locked.error();
    }
    const Result<QString> swept = LibraryRestore::sweep(package, places.state);
    if (!swept.ok()) {
        return swept.error();
    }
    if (!swept.value().isNull()) { // it lies where this one is to be staged
        return Error{ErrorCode::NotWritable, swept.value()};
    }
    if (const Result<void> staged = LibraryRestore::stage(package, places.state, from.path);
        !staged.ok()) {
        return staged.error();
    }
    // Only now: of the copies the oldest but the first goes with each new one, but not the one
    // whose catalogues are still to be put in place.
    const Result<QString> before =
        Backup::make(package, places.backups, Backup::OfDamaged::CopyAsIs, from.name);
    const Result<QStringList> lagging = before.ok() ? LibraryRestore::putInPlace(package, from.path)
                                                    : Result<QStringList>(before.error());
    locked.value().reset();
    const QStringList undone = clearAway(places, lagging);
    if (!lagging.ok()) {
        for (const QString& what : undone) {
            systemLog(what);
        }
        return lagging.error();
    }
    // It is this program's own change.
    ForeignUse::leave(places.state, ForeignUse::tracesOf(package).print);
    return LibraryBackups::Restored{from, before.value(), {}, lagging.value() + undone};
}

} // namespace

Result<LibraryBackup> LibraryBackups::make(const QString& path)
{
    const QString package = absolute(path);
    if (const Result<QString> version = OpeningChecks::recognise(package); !version.ok()) {
        return version.error();
    }
    if (const Result<void> known = StateFolder::isKnown(package); !known.ok()) {
        return known.error();
    }
    // Read-only media can be copied, too; nobody writes to them meanwhile.
    Result<ConnectionPtr> connection =
        Connection::open(package, Connection::Mode::Write, kBusyMilliseconds);
    const bool isReadOnly = !connection.ok() && connection.error().code == ErrorCode::NotWritable;
    if (isReadOnly) {
        connection = Connection::open(package, Connection::Mode::Read, kBusyMilliseconds);
    }
    if (!connection.ok()) {
        return connection.error();
    }
    const Places places = placesOf(package, connection.value().get());
    const Result<std::unique_ptr<LibraryLock>> lock = LibraryLock::take(package, places.state);
    if (!lock.ok()) {
        return lock.error();
    }
    const Result<QString> made = LibraryErrors::caught(package, [&]() -> Result<QString> {
        if (!isReadOnly) {
            connection.value()->beginImmediate(); // so that all are of one moment
        }
        return Backup::make(package, places.backups);
    });
    return made.ok() ? Result<LibraryBackup>(at(made.value())) : made.error();
}

Result<QString> LibraryBackups::folder(const QString& path)
{
    const QString package = absolute(path);
    if (const Result<void> known = StateFolder::isKnown(package); !known.ok()) {
        return known.error();
    }
    const Result<ConnectionPtr> connection = connectTo(package, Connection::Mode::Read);
    if (!connection.ok()) {
        return connection.error();
    }
    const Places places = placesOf(package, connection.value().get());
    const Result<void> library = isLibrary(package, places);
    return library.ok() ? Result<QString>(places.backups) : Result<QString>(library.error());
}

LibraryBackup LibraryBackups::at(const QString& path)
{
    const QFileInfo copy(path);
    return described(copy.path(), copy.fileName());
}

Result<QList<LibraryBackup>> LibraryBackups::list(const QString& path)
{
    const QString package = absolute(path);
    LibraryRestore::resume(package);
    const Result<ConnectionPtr> connection = connectTo(package, Connection::Mode::Read);
    const Places places = placesOf(package, connection.ok() ? connection.value().get() : nullptr);
    if (const Result<void> library = isLibrary(package, places); !library.ok()) {
        return library.error();
    }
    QList<LibraryBackup> backups;
    const QStringList names = Backup::names(places.backups);
    for (const QString& name : names) {
        backups.append(described(places.backups, name));
    }
    return backups;
}

QStringList LibraryBackups::warnings(const QString& path)
{
    const QString package = absolute(path);
    const ForeignUse::Traces found = ForeignUse::tracesOf(package);
    const Result<ConnectionPtr> connection = connectTo(package, Connection::Mode::Read);
    const Places places = placesOf(package, connection.ok() ? connection.value().get() : nullptr);
    const ForeignUse::Warnings warnings = ForeignUse::warnings(package, places.state, found);
    return (warnings.passing.isNull() ? QStringList() : QStringList{warnings.passing}) +
           warnings.lasting;
}

Result<LibraryBackups::Restored>
LibraryBackups::restore(const QString& path, const QString& date, bool afterCrash)
{
    const QString package = absolute(path);
    if (const Result<void> known = StateFolder::isKnown(package); !known.ok()) {
        return known.error();
    }
    LibraryRestore::resume(package);
    Result<ConnectionPtr> connection = connectTo(package, Connection::Mode::Read);
    if (!connection.ok()) {
        return connection.error();
    }
    const Places places = placesOf(package, connection.value().get());
    connection.value().reset();
    if (const Result<void> library = isLibrary(package, places); !library.ok()) {
        return library.error();
    }
    const Result<LibraryBackup> from = chosen(places, date);
    if (!from.ok()) {
        return from.error();
    }
    const Result<std::unique_ptr<LibraryLock>> lock = LibraryLock::take(package, places.state);
    if (!lock.ok()) {
        return lock.error();
    }
    Result<Restored> restored = replaced(places, from.value(), afterCrash);
    if (restored.ok()) {
        tellKept(package, restored.value());
    }
    return restored;
}
