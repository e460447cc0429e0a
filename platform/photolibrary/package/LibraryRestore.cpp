#include "LibraryRestore.h"

#include "AtomicFile.h"
#include "Backup.h"
#include "Catalogues.h"
#include "Clock.h"
#include "Connection.h"
#include "FileSystemFlush.h"
#include "IntegrityCheck.h"
#include "LibraryErrors.h"
#include "PackageFiles.h"
#include "PropertyList.h"
#include "SystemLog.h"
#include "WholeFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

namespace
{

/// In the package: what is to be put in place, then what was there before. Of the same name in the
/// staged folder of the databases: a file that tells them apart, which holds the number of the last
/// turn that the journal tells of, in digits.
constexpr QLatin1StringView kStaging(".corvane-restore");
constexpr QLatin1StringView kDatabases("Database");

QString stagingOf(const QString& package)
{
    return package + u'/' + kStaging;
}

QString markIn(const QString& folder)
{
    return folder + u'/' + kDatabases + u'/' + kStaging;
}

QString noteIn(const QString& stateFolder)
{
    return stateFolder + "/restore"_L1;
}

qint64 lastTurnIn(const QString& stateFolder)
{
    const QList<JournaledTurn> turns = TurnJournal::read(stateFolder);
    return turns.isEmpty() ? 0 : turns.last().number;
}

bool isFolder(const QString& path)
{
    const QFileInfo entry(path);
    return entry.isDir() && !entry.isSymLink();
}

/// iPhoto has links to the databases beside their folder, which a copy does not hold; folders that
/// are empty are not copied either.
Result<void> copyShape(const QString& from, const QString& to)
{
    const fs::path source(QFile::encodeName(from).toStdString());
    const fs::path target(QFile::encodeName(to).toStdString());
    std::error_code error;
    for (fs::directory_iterator entry(source, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        const fs::path place = target / entry->path().filename();
        if (entry->is_symlink()) {
            fs::copy_symlink(entry->path(), place, error);
            AtomicFile::giveToOwnerOfFolder(QFile::decodeName(place.c_str()));
        } else if (entry->is_directory()) {
            fs::create_directory(place, error);
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        return AtomicFile::errorFromErrno(error.value(), u"write"_s, to);
    }
    return {};
}

/// Whose the new entry is and who may read it follows from what it takes the place of, or from its
/// folder where there was nothing.
Result<void> takeOver(const QString& package, const QString& staging, const QString& relative)
{
    const QString present = package + u'/' + relative;
    const QString staged = staging + u'/' + relative;
    if (QFileInfo::exists(present)) {
        return AtomicFile::takeOver(present, staged);
    }
    AtomicFile::giveToOwnerOfFolder(staged);
    return {};
}

/// takeOver() for the folder of the databases and all that is in it, each folder before its
/// content.
Result<void> takeOverAll(const QString& package, const QString& staging)
{
    Result<void> done = takeOver(package, staging, kDatabases);
    QDirIterator walk(staging + u'/' + kDatabases,
                      QDir::Dirs | QDir::Files | QDir::Hidden | QDir::NoSymLinks |
                          QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (done.ok() && walk.hasNext()) {
        done = takeOver(package, staging, walk.next().mid(staging.size() + 1));
    }
    return done;
}

/// A copy cannot take the place of what lies behind a link: the link would be lost, or what it
/// leads to would be written at once.
Result<void> isWithoutLinks(const QString& package, const QString& copy)
{
    QStringList parts{kDatabases};
    parts += Backup::parts(copy);
    for (const QString& part : std::as_const(parts)) {
        const bool isOfDatabases = (part + u'/').startsWith(kDatabases + u'/');
        const QString path = package + u'/' + part;
        if (isOfDatabases &&
            (QFileInfo(path).isSymLink() || PackageFiles::leadsOut(package, part))) {
            return Error{ErrorCode::NotWritable,
                         u"\"%1\" lies behind a symbolic link, so that no backup can take its "
                         "place, and nothing was changed. Put the file or folder itself in the "
                         "place of the link."_s.arg(path)};
        }
    }
    return {};
}

Result<void> copyDatabases(const QString& copy, const QString& staging)
{
    const QStringList parts = Backup::parts(copy);
    for (const QString& part : parts) {
        if (!part.startsWith(kDatabases + u'/')) {
            continue;
        }
        const QString to = staging + u'/' + part;
        const QString folder = QFileInfo(to).path();
        const Result<void> copied =
            QDir().mkpath(folder) ? Backup::copyFile(copy + u'/' + part, to)
                                  : AtomicFile::errorFromErrno(errno, u"make the folder"_s, folder);
        if (!copied.ok()) {
            return copied;
        }
    }
    return {};
}

Result<void> isWhole(const QString& staging, const QString& copy)
{
    const Result<std::unique_ptr<Connection>> connection =
        Connection::open(staging, Connection::Mode::Read);
    Result<QList<Finding>> damages =
        connection.ok()
            ? LibraryErrors::caught(staging,
                                    [&]() -> Result<QList<Finding>> {
                                        return IntegrityCheck::ofForm(*connection.value());
                                    })
            : Result<QList<Finding>>(connection.error());
    if (damages.ok() && damages.value().isEmpty()) {
        return {};
    }
    return Error{
        ErrorCode::Damaged,
        u"The backup \"%1\" is damaged, so nothing was changed. Choose another one."_s.arg(copy)};
}

Result<void> makeStaging(const QString& package, const QString& stateFolder, const QString& copy)
{
    const QString staging = stagingOf(package);
    const QString databases = staging + u'/' + kDatabases;
    Result<void> done = AtomicFile::makeFolder(databases);
    const FileSystemFlush written(staging);
    done = done.ok() ? copyShape(package + u'/' + kDatabases, databases) : done;
    done = done.ok() ? copyDatabases(copy, staging) : done;
    done = done.ok() ? takeOverAll(package, staging) : done;
    done = done.ok() ? isWhole(staging, copy) : done;
    done = done.ok() ? written.flush() : done;
    done = done.ok()
               ? AtomicFile::write(markIn(staging), QByteArray::number(lastTurnIn(stateFolder)))
               : done;
    done = done.ok() ? AtomicFile::flushFolder(databases) : done;
    return done.ok() ? AtomicFile::flushFolder(staging) : done;
}

Result<void> renamed(const QString& from, const QString& to)
{
    return ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0
               ? Result<void>()
               : AtomicFile::errorFromErrno(errno, u"write"_s, to);
}

/// For file systems that cannot exchange two names. Between the two renames the library has no
/// databases, which resume() makes good.
Result<void> exchangeInTwoSteps(const QString& present, const QString& staged)
{
    const QString before = staged + ".before"_L1;
    if (QFileInfo::exists(present)) {
        if (Result<void> aside = renamed(present, before); !aside.ok()) {
            return aside;
        }
    }
    Result<void> placed = renamed(staged, present);
    if (!placed.ok() && QFileInfo::exists(present + u'/' + kStaging)) {
        return {}; // another program's opening has made it good
    }
    if (!placed.ok() && QFileInfo::exists(before)) {
        static_cast<void>(renamed(before, present));
    }
    return placed;
}

Result<void> exchange(const QString& present, const QString& staged)
{
    if (QFileInfo::exists(present)) {
        const int done = ::renameat2(AT_FDCWD,
                                     QFile::encodeName(present).constData(),
                                     AT_FDCWD,
                                     QFile::encodeName(staged).constData(),
                                     RENAME_EXCHANGE);
        if (done == 0) {
            return {};
        }
        if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP) {
            return AtomicFile::errorFromErrno(errno, u"write"_s, present);
        }
    }
    return exchangeInTwoSteps(present, staged);
}

/// After it no power cut undoes the exchange.
Result<void> flushExchange(const QString& package)
{
    const QString staging = stagingOf(package);
    Result<void> flushed = AtomicFile::flushFolder(package);
    return flushed.ok() && isFolder(staging) ? AtomicFile::flushFolder(staging) : flushed;
}

/// Writes one of the copy's files over that of the package, of which no earlier restore leaves
/// anything unfinished then.
Result<void> putFile(const QString& package, const QString& copy, const QString& part)
{
    const QString to = package + u'/' + part;
    const Result<QByteArray> bytes =
        WholeFile::read(copy + u'/' + part, PropertyList::kMostBytesOfCatalogue);
    if (!bytes.ok()) {
        return bytes.error();
    }
    if (Result<void> allowed = PackageFiles::mayBeWritten(package, part); !allowed.ok()) {
        return allowed;
    }
    PackageFiles::removeUnfinished(package, part.section(u'/', 0, -2), part.section(u'/', -1));
    const Result<void> done = AtomicFile::makeFolder(QFileInfo(to).path());
    return done.ok() ? AtomicFile::write(to, bytes.value()) : done;
}

/// Makes both catalogues follow the databases; a sentence where they cannot.
QStringList remadeCatalogues(const QString& package)
{
    const Result<std::unique_ptr<Connection>> connection =
        Connection::open(package, Connection::Mode::Read);
    const Result<Catalogues::CarriedOver> written =
        connection.ok() ? LibraryErrors::caught(package,
                                                [&]() -> Result<Catalogues::CarriedOver> {
                                                    return Catalogues::write(*connection.value(),
                                                                             SystemClock().now());
                                                })
                        : Result<Catalogues::CarriedOver>(connection.error());
    if (!written.ok()) {
        return {written.error().message};
    }
    const QString& leftAlone = written.value().leftAlone;
    return leftAlone.isNull() ? QStringList() : QStringList{leftAlone};
}

/// The catalogues follow the databases, as do the few files beside them.
QStringList putCatalogues(const QString& package, const QString& copy)
{
    const QStringList parts = Backup::parts(copy);
    bool areToBeMade = false;
    for (const QLatin1StringView catalogue : {Catalogues::kFull, Catalogues::kBrief}) {
        areToBeMade = areToBeMade || !parts.contains(catalogue);
    }
    QStringList lagging;
    for (const QString& part : parts) {
        if (part.startsWith(kDatabases + u'/')) {
            continue;
        }
        const Result<void> done = putFile(package, copy, part);
        if (done.ok()) {
            continue;
        }
        if (part == Catalogues::kFull || part == Catalogues::kBrief) {
            systemLog(done.error().message);
            areToBeMade = true;
        } else {
            lagging << done.error().message;
        }
    }
    return areToBeMade ? lagging + remadeCatalogues(package) : lagging;
}

} // namespace

Result<void>
LibraryRestore::stage(const QString& package, const QString& stateFolder, const QString& copy)
{
    if (QFileInfo::exists(stagingOf(package))) {
        return Error{ErrorCode::NotWritable,
                     u"In the library \"%1\" there is \"%2\" already: move it away."_s.arg(
                         package, kStaging)};
    }
    if (Result<void> replaceable = isWithoutLinks(package, copy); !replaceable.ok()) {
        return replaceable;
    }
    if (Result<void> noted = AtomicFile::write(noteIn(stateFolder), package.toUtf8());
        !noted.ok()) {
        return noted;
    }
    Result<void> staged = makeStaging(package, stateFolder, copy);
    if (!staged.ok()) {
        if (const Result<void> swept = sweep(package, stateFolder); !swept.ok()) {
            systemLog(swept.error().message);
        }
    }
    return staged;
}

Result<QStringList> LibraryRestore::putInPlace(const QString& package, const QString& copy)
{
    const QString present = package + u'/' + kDatabases;
    if (Result<void> done = exchange(present, stagingOf(package) + u'/' + kDatabases); !done.ok()) {
        return done.error();
    }
    if (const Result<void> flushed = flushExchange(package); !flushed.ok()) {
        systemLog(flushed.error().message);
    }
    return putCatalogues(package, copy);
}

bool LibraryRestore::isInPlace(const QString& package, const QString& stateFolder)
{
    return QFileInfo::exists(noteIn(stateFolder)) && QFileInfo::exists(markIn(package));
}

Result<void> LibraryRestore::sweep(const QString& package, const QString& stateFolder)
{
    const bool hasDatabases = QFileInfo::exists(package + u'/' + kDatabases);
    if (!QFileInfo::exists(noteIn(stateFolder)) || !hasDatabases) {
        return {};
    }
    const bool wasPutInPlace = isInPlace(package, stateFolder);
    if (wasPutInPlace) {
        if (Result<void> flushed = flushExchange(package); !flushed.ok()) {
            return flushed;
        }
    }
    const QList<PackageFiles::NotRemoved> left = PackageFiles::remove(package, kStaging);
    if (!left.isEmpty()) {
        systemLog(
            u"These files in the library \"%1\" are of no use any more but could not be "
            "removed; the next run tries again:\n%2"_s.arg(package, PackageFiles::listed(left)));
    } else if (!wasPutInPlace) {
        QFile::remove(noteIn(stateFolder));
    }
    return {};
}

QList<JournaledTurn> LibraryRestore::turns(const QString& package, const QString& stateFolder)
{
    QList<JournaledTurn> turns = TurnJournal::read(stateFolder);
    QFile mark(markIn(package));
    if (isInPlace(package, stateFolder) && mark.open(QIODevice::ReadOnly)) {
        const qint64 lastBefore = mark.readAll().toLongLong();
        turns.removeIf(
            [lastBefore](const JournaledTurn& turn) { return turn.number <= lastBefore; });
    }
    return turns;
}

void LibraryRestore::followed(const QString& package, const QString& stateFolder)
{
    if (!QFileInfo::exists(stagingOf(package))) { // which could not be swept without the note
        QFile::remove(markIn(package));
        QFile::remove(noteIn(stateFolder));
    }
}

void LibraryRestore::resume(const QString& package)
{
    const QString present = package + u'/' + kDatabases;
    const QString staged = stagingOf(package) + u'/' + kDatabases;
    if (!QFileInfo::exists(present) && isFolder(staged) &&
        QFileInfo::exists(markIn(stagingOf(package)))) {
        if (const Result<void> done = renamed(staged, present); !done.ok()) {
            systemLog(done.error().message);
        }
    }
}
