#pragma once

#include "Result.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// A dated copy of a library's databases and catalogues.
struct LibraryBackup {
    QString name;                 ///< tells it apart; its moment in UTC as "yyyyMMdd-HHmmss-zzz"
    QString path;                 ///< absolute
    QDateTime moment;             ///< UTC
    qint64 bytes{0};              ///< on disk
    std::optional<qint64> photos; ///< out of the trash that it knows; nothing where it is damaged
};

/// The dated copies of a library that lie outside of its package, for the faces: made, listed and
/// restored without the library being open. `path`, if nothing else is said: the package's. Any
/// thread. Every error's message names the path and the remedy.
namespace LibraryBackups
{

/// The folder below which the copies of a library lie, whether or not there is one yet. Errors:
/// NotFound, Unsupported, NotWritable (it is not known where), Unreadable.
[[nodiscard]] Result<QString> folder(const QString& path);
/// The copy that lies at `path`, which make() or the library told.
[[nodiscard]] LibraryBackup at(const QString& path);

/// What a restore did.
struct Restored {
    LibraryBackup from;
    QString before; ///< folder of the copy that was made of the state before
    QStringList
        kept; ///< originals that the restored databases do not know; package-relative, sorted
    QStringList lagging; ///< a sentence for each file beside the databases that is not as they are,
                         ///< for what could not be cleared away, and one where it is not known
                         ///< what is `kept`
};

/// Makes one. Errors: NotFound, Unsupported, InUse, NotWritable, OutOfSpace, Unreadable, Damaged.
[[nodiscard]] Result<LibraryBackup> make(const QString& path);

/// The oldest first; also of a library whose databases are damaged or gone. Errors: NotFound,
/// Unsupported for what never was a library.
[[nodiscard]] Result<QList<LibraryBackup>> list(const QString& path);

/// What a person should know before a restore: signs that another program uses the library. A
/// sentence or two each, often none.
[[nodiscard]] QStringList warnings(const QString& path);

/// Puts databases, sidecars and catalogues of a copy in place of those that are there, all at once:
/// a kill at any moment leaves the library as it was or as it is to be. A copy of what is there is
/// made before. No file of Masters, Previews or Thumbnails is touched. `date`: the name of a copy,
/// or the begin of just one, with or without dashes and colons. `afterCrash`: also where iPhoto did
/// not close the library, or has it open on another machine.
/// Errors: NotFound (no such copy, or more than one), InUse, NotClosed, NotWritable, OutOfSpace,
/// Unreadable, Damaged (the copy); nothing is changed by a failed restore.
[[nodiscard]] Result<Restored> restore(const QString& path, const QString& date, bool afterCrash);

} // namespace LibraryBackups
