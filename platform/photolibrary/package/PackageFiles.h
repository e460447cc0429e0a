#pragma once

#include <QString>
#include <QStringList>

/// Files inside a package by their relative paths. Nothing outside the package is ever touched: a
/// path that is empty, absolute or leads up is refused. Any thread.
namespace PackageFiles
{

/// Whether the relative path stays inside the package: not empty, not absolute, no "..", no NUL.
[[nodiscard]] bool isInside(const QString& relativePath);
/// Bytes of a file, or of all files below a folder; links are not followed. 0 when absent.
[[nodiscard]] qint64 bytesOf(const QString& package, const QString& relativePath);
/// Removes a file, or a folder with the files in it. True when it is gone.
bool remove(const QString& package, const QString& relativePath);
/// Removes those folders, and their parents up to the package's first level, that are empty.
void removeEmpty(const QString& package, const QStringList& folders);
/// Removes files that a turn made or was making, with the folders that this leaves empty. True
/// when all are gone.
bool removeMade(const QString& package, const QStringList& files);
/// Removes what AtomicFile left unfinished in a folder: of the file `name`, or of all its files.
void removeUnfinished(const QString& package, const QString& folder, const QString& name = {});

} // namespace PackageFiles
