#pragma once

#include "Result.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

class FileSystemFlush;

/// Dated copies of a library's databases and catalogues, outside the package. Any thread.
namespace Backup
{

/// What becomes of a database that is none any more, so that SQLite cannot copy it.
enum class OfDamaged : quint8 {
    Refuse,   ///< no copy is made
    CopyAsIs, ///< its bytes are copied; for a library that is to be replaced as a whole
};

/// Copies Database, AlbumData.xml, iLifeShared and Info.plist into a new dated folder below
/// `backupsFolder` and flushes it; the three databases that are in use through SQLite's own backup,
/// since no other code may open them. The first copy ever and the last three are kept. Returns the
/// new folder, which is named for its moment in UTC, behind all others. A copy that a crash cut off
/// is removed: only a library's writer may call this. Errors: NotWritable, OutOfSpace, Unreadable;
/// a copy that failed is removed again. `damaged`: of a database that SQLite cannot copy. `spared`:
/// the name of a copy that stays now, though it be neither the first nor of the last.
[[nodiscard]] Result<QString> make(const QString& package,
                                   const QString& backupsFolder,
                                   OfDamaged damaged = OfDamaged::Refuse,
                                   const QString& spared = {});

/// Names of the finished copies in a folder of backups, the oldest first.
[[nodiscard]] QStringList names(const QString& backupsFolder);
/// The moment in UTC that the name of a copy tells; invalid for any other name.
[[nodiscard]] QDateTime momentOf(const QString& name);
/// The files of a finished copy, or of a package, that belong into a copy: relative, sorted. The
/// folder of the databases, each of the three, and the whole folders of sidecars are found behind
/// links too; a link within those folders leads to what the library does not write. The mark of a
/// restore (RestoreStaging) is none.
[[nodiscard]] QStringList parts(const QString& package);
/// Copies a file that no connection has open; nothing is flushed.
[[nodiscard]] Result<void> copyFile(const QString& from, const QString& to);
/// Flushes a copy, or what is to be put in place of one, of whose folder `written` is: the files of
/// the databases one by one in any case, since they are few and everything else follows from them.
[[nodiscard]] Result<void> flush(const FileSystemFlush& written, const QString& copy);

} // namespace Backup
