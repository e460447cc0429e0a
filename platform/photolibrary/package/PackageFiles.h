#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Files inside a package by their relative paths. Nothing outside the package is ever touched: a
/// path that is empty, absolute or leads up is refused. Any thread.
namespace PackageFiles
{

/// What is still there though it was to be removed.
struct NotRemoved {
    QString path;   ///< relative to the package
    QString reason; ///< the system's words: "Permission denied"
};

/// Whether the relative path stays inside the package: not empty, not absolute, no "..", no NUL.
[[nodiscard]] bool isInside(const QString& relativePath);
/// Bytes of a file, or of all files below a folder; links are not followed. 0 when absent.
[[nodiscard]] qint64 bytesOf(const QString& package, const QString& relativePath);
/// Removes a file, or a folder with the files in it. Returns what could not be removed: nothing
/// when all is gone, as what was not there is.
[[nodiscard]] QList<NotRemoved> remove(const QString& package, const QString& relativePath);
/// Removes those folders, and their parents up to the package's first level, that are empty.
void removeEmpty(const QString& package, const QStringList& folders);
/// Removes files that a turn made or was making, with the folders that this leaves empty. Returns
/// what could not be removed.
[[nodiscard]] QList<NotRemoved> removeMade(const QString& package, const QStringList& files);
/// Removes what AtomicFile left unfinished in a folder: of the file `name`, or of all its files.
void removeUnfinished(const QString& package, const QString& folder, const QString& name = {});

/// One line for each path with its reason, for a message; of many the first ones and a count.
[[nodiscard]] QString listed(const QList<NotRemoved>& notRemoved);

} // namespace PackageFiles
