#include "LibraryRestore.h"

#include "AtomicFile.h"
#include "Backup.h"
#include "Catalogues.h"
#include "Clock.h"
#include "Connection.h"
#include "LibraryErrors.h"
#include "PackageFiles.h"
#include "PropertyList.h"
#include "RestoreStaging.h"
#include "SystemLog.h"
#include "WholeFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;
using RestoreStaging::databasesIn;
using RestoreStaging::folderIn;
using RestoreStaging::markIn;

namespace
{

QString noteIn(const QString& stateFolder)
{
    return stateFolder + "/restore"_L1;
}

qint64 lastJournaledTurn(const QString& stateFolder)
{
    const QList<JournaledTurn> turns = TurnJournal::read(stateFolder);
    return turns.isEmpty() ? 0 : turns.last().number;
}

bool isFolder(const QString& path)
{
    const QFileInfo entry(path);
    return entry.isDir() && !entry.isSymLink();
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
    if (!placed.ok() && QFileInfo::exists(present + u'/' + RestoreStaging::kFolder)) {
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

/// Without the note nothing of a restore is swept, and beside the note of another one its mark
/// would tell what is not so: the note goes only when no power cut can bring staged files or mark
/// back.
void dropNote(const QString& package, const QString& stateFolder)
{
    const bool isAllGone =
        !QFileInfo::exists(folderIn(package)) && !QFileInfo::exists(markIn(package));
    if (isAllGone && AtomicFile::flushFolder(package).ok() &&
        AtomicFile::flushFolder(databasesIn(package)).ok()) {
        QFile::remove(noteIn(stateFolder));
    }
}

/// After it no power cut undoes the exchange.
Result<void> flushExchange(const QString& package)
{
    const QString staging = folderIn(package);
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
        if (part.startsWith(RestoreStaging::kDatabases + u'/')) {
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
    if (QFileInfo::exists(folderIn(package))) {
        return Error{ErrorCode::NotWritable,
                     u"In the library \"%1\" there is \"%2\" already: move it away."_s.arg(
                         package, RestoreStaging::kFolder)};
    }
    if (Result<void> replaceable = RestoreStaging::canTakeThePlace(package, copy);
        !replaceable.ok()) {
        return replaceable;
    }
    if (Result<void> noted = AtomicFile::write(noteIn(stateFolder), package.toUtf8());
        !noted.ok()) {
        return noted;
    }
    Result<void> staged = RestoreStaging::make(package, copy, lastJournaledTurn(stateFolder));
    if (!staged.ok()) {
        const Result<QString> swept = sweep(package, stateFolder);
        const QString told = swept.ok() ? swept.value() : swept.error().message;
        if (!told.isNull()) {
            systemLog(told);
        }
    }
    return staged;
}

Result<QStringList> LibraryRestore::putInPlace(const QString& package, const QString& copy)
{
    const QString present = databasesIn(package);
    if (Result<void> done = exchange(present, databasesIn(folderIn(package))); !done.ok()) {
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

Result<QString> LibraryRestore::sweep(const QString& package, const QString& stateFolder)
{
    const bool hasDatabases = QFileInfo::exists(databasesIn(package));
    if (!QFileInfo::exists(noteIn(stateFolder)) || !hasDatabases) {
        return QString();
    }
    if (isInPlace(package, stateFolder)) {
        if (const Result<void> flushed = flushExchange(package); !flushed.ok()) {
            return flushed.error();
        }
    }
    const QList<PackageFiles::NotRemoved> left =
        PackageFiles::remove(package, RestoreStaging::kFolder);
    if (!left.isEmpty()) {
        return u"A restore left these files in the library \"%1\", which could not be removed; the "
               "next run tries again, make their folders writable:\n%2"_s.arg(
                   package, PackageFiles::listed(left));
    }
    dropNote(package, stateFolder);
    return QString();
}

QList<JournaledTurn> LibraryRestore::turns(const QString& package, const QString& stateFolder)
{
    QList<JournaledTurn> turns = TurnJournal::read(stateFolder);
    if (isInPlace(package, stateFolder)) {
        const std::optional<qint64> lastBefore = RestoreStaging::lastTurnOf(markIn(package));
        turns.removeIf([lastBefore](const JournaledTurn& turn) {
            return !lastBefore || turn.number <= *lastBefore;
        });
    }
    return turns;
}

QStringList LibraryRestore::followed(const QString& package, const QString& stateFolder)
{
    QFile mark(markIn(package));
    if (mark.exists() && !mark.remove()) {
        return {
            u"\"%1\", the mark of a restore that is finished, cannot be removed (%2): remove it. "
            "Until then each run that writes makes the catalogues anew, and what a crash leaves "
            "may stay."_s.arg(mark.fileName(), mark.errorString())};
    }
    dropNote(package, stateFolder);
    return {};
}

void LibraryRestore::resume(const QString& package)
{
    const QString present = databasesIn(package);
    const QString staged = databasesIn(folderIn(package));
    if (!QFileInfo::exists(present) && isFolder(staged) &&
        QFileInfo::exists(markIn(folderIn(package)))) {
        if (const Result<void> done = renamed(staged, present); !done.ok()) {
            systemLog(done.error().message);
        }
    }
}
