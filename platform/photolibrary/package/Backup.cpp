#include "Backup.h"

#include "AtomicFile.h"
#include "DatabaseFiles.h"
#include "FileSystemFlush.h"
#include "LibraryErrors.h"
#include "RestoreStaging.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <SQLiteCpp/Backup.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype kLastKept = 3;
constexpr QLatin1StringView kUnfinished(".unfinished");
/// Of a package; it, and each database in it, may be a link to where the databases lie.
const QString kDatabaseFolder = u"Database/apdb/"_s;
/// Sorts by moment.
const QString kStamp = u"yyyyMMdd-HHmmss-zzz"_s;

/// Whether SQLite met the error where it wrote the copy, not where it read the database.
bool isOfCopy(const SQLite::Exception& exception)
{
    constexpr int kPrimaryCodeMask = 0xFF;
    const int extended = exception.getExtendedErrorCode();
    const bool isOfReading = extended == SQLITE_IOERR_READ || extended == SQLITE_IOERR_SHORT_READ;
    switch (exception.getErrorCode() & kPrimaryCodeMask) {
    case SQLITE_FULL:
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
        return true;
    default:
        return (exception.getErrorCode() & kPrimaryCodeMask) == SQLITE_IOERR && !isOfReading;
    }
}

Result<void> copyPages(SQLite::Database& source, const QString& package, const QString& to)
{
    try {
        SQLite::Database target(QFile::encodeName(to).toStdString(),
                                SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        SQLite::Backup backup(target, source);
        constexpr int kAllPages = -1;
        if (backup.executeStep(kAllPages) != SQLITE_DONE) {
            return LibraryErrors::fromSqlite({"database is locked", SQLITE_BUSY}, package);
        }
        return {};
    } catch (const SQLite::Exception& exception) {
        if (!isOfCopy(exception)) {
            throw;
        }
        const bool isFull = exception.getErrorCode() == SQLITE_FULL;
        return Error{isFull ? ErrorCode::OutOfSpace : ErrorCode::NotWritable,
                     u"The backup \"%1\" cannot be written: %2."_s.arg(
                         to, QString::fromUtf8(exception.getErrorStr()))};
    }
}

Result<void> copyDatabase(const QString& package, const QString& from, const QString& to)
{
    return LibraryErrors::caught(package, [&]() -> Result<void> {
        SQLite::Database source(QFile::encodeName(from).toStdString(), SQLite::OPEN_READONLY);
        return copyPages(source, package, to);
    });
}

/// Every file below `folder` of the package, by its path relative to the package. The folder itself
/// may be a link; those below it are not followed.
QStringList filesBelow(const QString& package, const QString& folder)
{
    QStringList files;
    QDirIterator walk(QDir::cleanPath(package + u'/' + folder),
                      QDir::Files | QDir::Hidden | QDir::NoSymLinks,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        files.append(walk.next().mid(package.size() + 1));
    }
    return files;
}

Result<void> copyPart(const QString& package,
                      const QString& target,
                      const QString& relative,
                      Backup::OfDamaged damaged)
{
    const QString to = target + u'/' + relative;
    const QString folder = QFileInfo(to).absolutePath();
    if (!QDir().mkpath(folder)) {
        return AtomicFile::errorFromErrno(errno, u"make the folder"_s, folder);
    }
    const QString from = package + u'/' + relative;
    const QString name = relative.section(u'/', -1);
    const bool inDatabases = relative.startsWith(kDatabaseFolder);
    if (inDatabases && (name.contains("-journal"_L1) || name.contains("-mj"_L1))) {
        return {}; // belongs to a transaction, not to the state
    }
    if (!inDatabases ||
        std::ranges::find(DatabaseFiles::kTogether, name) == std::end(DatabaseFiles::kTogether)) {
        return Backup::copyFile(from, to);
    }
    Result<void> copied = copyDatabase(package, from, to);
    const bool isDamaged = !copied.ok() && copied.error().code == ErrorCode::Damaged;
    if (isDamaged && damaged == Backup::OfDamaged::CopyAsIs) {
        QFile::remove(to);
        copied = Backup::copyFile(from, to);
    }
    return copied;
}

Result<void> copyAll(const QString& package, const QString& target, Backup::OfDamaged damaged)
{
    const FileSystemFlush written(target);
    const QStringList parts = Backup::parts(package);
    for (const QString& part : parts) {
        if (Result<void> copied = copyPart(package, target, part, damaged); !copied.ok()) {
            return copied;
        }
    }
    return Backup::flush(written, target);
}

/// A name behind those of all copies that are there, also where the clock was set back meanwhile:
/// their order tells which are the first and the last.
QString newName(const QString& backupsFolder)
{
    QDateTime moment = QDateTime::currentDateTimeUtc();
    const QStringList names = Backup::names(backupsFolder);
    if (!names.isEmpty()) {
        moment = std::max(moment, Backup::momentOf(names.last()).addMSecs(1));
    }
    return moment.toString(kStamp);
}

/// Removes one of our own dated folders; its name is checked, so that nothing else can be meant.
void removeCopy(const QString& backupsFolder, const QString& name)
{
    const QString stamp = name.endsWith(kUnfinished) ? name.chopped(kUnfinished.size()) : name;
    if (Backup::momentOf(stamp).isValid() && QDir::isAbsolutePath(backupsFolder)) {
        QDir(backupsFolder + u'/' + name).removeRecursively();
    }
}

/// What a crash left of copies under way; the library's lock keeps other writers away.
void removeUnfinished(const QString& backupsFolder)
{
    const QStringList names =
        QDir(backupsFolder).entryList({u'*' + kUnfinished}, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& name : names) {
        removeCopy(backupsFolder, name);
    }
}

void keepFirstAndLast(const QString& backupsFolder, const QString& spared)
{
    const QStringList names = Backup::names(backupsFolder);
    for (qsizetype index = 1; index < names.size() - kLastKept; ++index) {
        if (names.at(index) != spared) {
            removeCopy(backupsFolder, names.at(index));
        }
    }
}

Error notBackedUp(const Error& cause, const QString& package, const QString& backupsFolder)
{
    const QString remedy =
        cause.code == ErrorCode::Unreadable
            ? QString()
            : u" Make room or change the permissions in \"%1\", or set XDG_STATE_HOME to another "
              "folder."_s.arg(backupsFolder);
    return {cause.code,
            u"No backup of the databases of the library \"%1\" could be made, so nothing was "
            "written to it: %2%3"_s.arg(package, LibraryErrors::asSentence(cause.message), remedy)};
}

} // namespace

Result<void> Backup::copyFile(const QString& from, const QString& to)
{
    QFile source(from);
    if (source.exists() && !QFileInfo(from).isFile()) { // a pipe or device has no end
        return Error{
            ErrorCode::Unreadable,
            u"\"%1\" is no plain file: put a plain file in its place, or remove it."_s.arg(from)};
    }
    if (!source.open(QIODevice::ReadOnly)) {
        return Error{ErrorCode::Unreadable,
                     u"\"%1\" cannot be read (%2): check its permissions."_s.arg(
                         from, source.errorString())};
    }
    source.close();
    if (!source.copy(to)) {
        return Error{ErrorCode::NotWritable,
                     u"The backup \"%1\" cannot be written: %2."_s.arg(to, source.errorString())};
    }
    QFile::setPermissions(to, QFile::permissions(to) | QFile::WriteOwner);
    return {};
}

Result<void> Backup::flush(const FileSystemFlush& written, const QString& copy)
{
    const Result<void> done = FileSystemFlush::eachBelow(copy + u'/' + kDatabaseFolder);
    return done.ok() ? written.flush() : done;
}

QDateTime Backup::momentOf(const QString& name)
{
    QDateTime moment = QDateTime::fromString(name, kStamp);
    moment.setTimeSpec(Qt::UTC);
    return moment;
}

QStringList Backup::names(const QString& backupsFolder)
{
    QStringList names =
        QDir(backupsFolder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    names.removeIf([](const QString& name) { return !momentOf(name).isValid(); });
    return names;
}

QStringList Backup::parts(const QString& package)
{
    QStringList parts;
    for (const QString& folder : {u"Database"_s,
                                  u"Database/apdb"_s,
                                  u"Database/Versions"_s,
                                  u"Database/Albums"_s,
                                  u"Database/Folders"_s,
                                  u"iLifeShared"_s}) {
        parts += filesBelow(package, folder);
    }
    for (const QString& file : {u"AlbumData.xml"_s, u"Info.plist"_s}) {
        if (QFileInfo::exists(package + u'/' + file)) {
            parts.append(file);
        }
    }
    for (const QLatin1StringView name : DatabaseFiles::kTogether) {
        const QString database = kDatabaseFolder + name;
        if (QFileInfo(package + u'/' + database).isFile()) { // SQLite waits for ever at a pipe
            parts.append(database);
        }
    }
    parts.removeAll(RestoreStaging::kMark);
    parts.sort();
    parts.removeDuplicates();
    return parts;
}

Result<QString> Backup::make(const QString& package,
                             const QString& backupsFolder,
                             OfDamaged damaged,
                             const QString& spared)
{
    if (const Result<void> folder = AtomicFile::makeFolder(backupsFolder); !folder.ok()) {
        return notBackedUp(folder.error(), package, backupsFolder);
    }
    removeUnfinished(backupsFolder);
    const QString stamp = newName(backupsFolder);
    const QString unfinished = backupsFolder + u'/' + stamp + kUnfinished;
    const QString finished = backupsFolder + u'/' + stamp;
    if (!QDir().mkdir(unfinished)) {
        return notBackedUp(
            AtomicFile::errorFromErrno(errno, u"write"_s, unfinished), package, backupsFolder);
    }
    Result<void> copied = copyAll(package, unfinished, damaged);
    if (copied.ok() && !QDir().rename(unfinished, finished)) {
        copied = AtomicFile::errorFromErrno(errno, u"write"_s, finished);
    }
    if (copied.ok()) {
        copied = AtomicFile::flushFolder(backupsFolder);
    }
    if (!copied.ok()) {
        removeCopy(backupsFolder, stamp + kUnfinished);
        return notBackedUp(copied.error(), package, backupsFolder);
    }
    keepFirstAndLast(backupsFolder, spared);
    return finished;
}
