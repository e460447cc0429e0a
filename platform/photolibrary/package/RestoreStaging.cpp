#include "RestoreStaging.h"

#include "AtomicFile.h"
#include "Backup.h"
#include "Connection.h"
#include "FileSystemFlush.h"
#include "IntegrityCheck.h"
#include "LibraryErrors.h"
#include "PackageFiles.h"
#include "WholeFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

namespace
{

/// iPhoto has links to the databases beside their folder, which a copy does not hold; folders that
/// are empty are not copied either.
Result<void> copyShape(const QString& from, const QString& to)
{
    const fs::path source(QFile::encodeName(from).toStdString());
    const fs::path target(QFile::encodeName(to).toStdString());
    std::error_code unread;
    fs::directory_iterator entry(source, unread);
    if (unread == std::errc::no_such_file_or_directory) {
        return {};
    }
    for (; !unread && entry != fs::directory_iterator(); entry.increment(unread)) {
        const fs::path place = target / entry->path().filename();
        std::error_code unmade; // not `unread`, which the next step sets anew
        const fs::file_type type = entry->symlink_status(unmade).type();
        if (type == fs::file_type::symlink) {
            fs::copy_symlink(entry->path(), place, unmade);
            AtomicFile::giveToOwnerOfFolder(QFile::decodeName(place.c_str()));
        } else if (type == fs::file_type::directory) {
            fs::create_directory(place, unmade);
        }
        if (unmade) {
            return AtomicFile::errorFromErrno(
                unmade.value(), u"write"_s, QFile::decodeName(place.c_str()));
        }
    }
    return unread ? AtomicFile::errorFromErrno(unread.value(), u"read"_s, from) : Result<void>();
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
    Result<void> done = takeOver(package, staging, RestoreStaging::kDatabases);
    QDirIterator walk(RestoreStaging::databasesIn(staging),
                      QDir::Dirs | QDir::Files | QDir::Hidden | QDir::NoSymLinks |
                          QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (done.ok() && walk.hasNext()) {
        done = takeOver(package, staging, walk.next().mid(staging.size() + 1));
    }
    return done;
}

Result<void> copyDatabases(const QString& copy, const QString& staging)
{
    const QStringList parts = Backup::parts(copy);
    for (const QString& part : parts) {
        if (!part.startsWith(RestoreStaging::kDatabases + u'/')) {
            continue;
        }
        const QString to = staging + u'/' + part;
        const QString folder = QFileInfo(to).path();
        Result<void> copied = QDir().mkpath(folder)
                                  ? Backup::copyFile(copy + u'/' + part, to)
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

} // namespace

QString RestoreStaging::folderIn(const QString& package)
{
    return package + u'/' + kFolder;
}

QString RestoreStaging::databasesIn(const QString& folder)
{
    return folder + u'/' + kDatabases;
}

QString RestoreStaging::markIn(const QString& folder)
{
    return folder + u'/' + kMark;
}

std::optional<qint64> RestoreStaging::lastTurnOf(const QString& mark)
{
    constexpr qint64 kMostDigits = 19; // of 64 bits
    const Result<QByteArray> digits = WholeFile::read(mark, kMostDigits);
    bool isNumber = false;
    const qint64 number = digits.ok() ? digits.value().toLongLong(&isNumber) : 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

Result<void> RestoreStaging::canTakeThePlace(const QString& package, const QString& copy)
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

Result<void> RestoreStaging::make(const QString& package, const QString& copy, qint64 lastTurn)
{
    const QString staging = folderIn(package);
    const QString databases = databasesIn(staging);
    Result<void> done = AtomicFile::makeFolder(databases);
    const FileSystemFlush written(staging);
    done = done.ok() ? copyShape(databasesIn(package), databases) : done;
    done = done.ok() ? copyDatabases(copy, staging) : done;
    done = done.ok() ? takeOverAll(package, staging) : done;
    done = done.ok() ? isWhole(staging, copy) : done;
    done = done.ok() ? Backup::flush(written, staging) : done;
    done = done.ok() ? AtomicFile::write(markIn(staging), QByteArray::number(lastTurn)) : done;
    done = done.ok() ? AtomicFile::flushFolder(databases) : done;
    return done.ok() ? AtomicFile::flushFolder(staging) : done;
}
