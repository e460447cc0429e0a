#pragma once

#include "Result.h"

#include <QList>
#include <QString>
#include <QStringList>

/// Files inside a package by their relative paths. Nothing outside the package is ever touched: a
/// path that is empty, absolute or leads up is refused, and so is the removal of what lies in a
/// folder outside that a link in the package leads to. Any thread.
namespace PackageFiles
{

/// What is still there though it was to be removed.
struct NotRemoved {
    QString path;   ///< relative to the package
    QString reason; ///< the system's words: "Permission denied"
};

/// Whether the relative path stays inside the package: not empty, not absolute, no "..", no NUL.
[[nodiscard]] bool isInside(const QString& relativePath);
/// Whether the folder of that path lies outside the package, behind a symbolic link. What a person
/// keeps there, another library may use as well.
[[nodiscard]] bool leadsOut(const QString& package, const QString& relativePath);
/// Whether a file of the library may be written there: not where a symbolic link leads from there
/// out of the package, or to nothing, since what lies there is not the library's. The library's
/// whole folders down to the second level ("Masters", "Database/Versions") may be links themselves.
/// Errors: LeadsOut; NotWritable for no path of a package.
[[nodiscard]] Result<void> mayBeWritten(const QString& package, const QString& relativePath);
/// What removing a file, or all files below a folder, frees: their bytes, without links and without
/// files that have another name too (hard links). 0 when absent.
[[nodiscard]] qint64 bytesOf(const QString& package, const QString& relativePath);
/// Removes a file, or a folder with the files in it. Returns what could not be removed: nothing
/// when all is gone, as what was not there is.
[[nodiscard]] QList<NotRemoved> remove(const QString& package, const QString& relativePath);
/// Removes those folders, and their parents up to the package's first level, that are empty.
void removeEmpty(const QString& package, const QStringList& folders);
/// Makes removals of paths durable: after a power cut none of them is there again. Returns the
/// folders that could not be flushed.
[[nodiscard]] QList<NotRemoved> flushRemovals(const QString& package, const QStringList& paths);
/// Removes files that a turn made or was making, wherever the library's folders are, with the
/// folders that this leaves empty, durably. Returns what could not be removed.
[[nodiscard]] QList<NotRemoved> removeMade(const QString& package, const QStringList& files);
/// Removes what AtomicFile left unfinished of the file `name` in a folder, which is empty for the
/// package itself.
void removeUnfinished(const QString& package, const QString& folder, const QString& name);
/// The same of all files of the folder whose names end like that.
void removeAllUnfinished(const QString& package, const QString& folder, const QString& ending);

/// Whether AtomicFile gave that name to a file that it was writing.
[[nodiscard]] bool isUnfinished(const QString& name);
/// The path that an unfinished file is to bear, of a very long name the begin
/// (AtomicFile::nameInTemporary()); that of any other is its own.
[[nodiscard]] QString finishedPath(const QString& path);

/// One line for each path with its reason, for a message; of many the first ones and a count.
[[nodiscard]] QString listed(const QList<NotRemoved>& notRemoved);

} // namespace PackageFiles
