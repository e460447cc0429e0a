#pragma once

#include "Connection.h"
#include "NamedFiles.h"

#include <QStringList>

/// Files in a package that nothing refers to. They may be somebody's only copy: they are told, and
/// left. What the Finder leaves everywhere (".DS_Store") does not count. Sorted. Thread: the
/// connection's. Errors: SQLite::Exception.
namespace StrayFiles
{

/// Files in Masters that no master names, relative to it. Neither case nor composition of letters
/// counts, nor do files that `namedFiles` (package-relative) holds.
[[nodiscard]] QStringList inMasters(Connection& connection, const NamedFiles& namedFiles);

/// Folders in Previews and Thumbnails that hold files and are those of no photo version, and
/// folders of sidecars of no master. Package-relative. Files and folders that `namedFiles` holds do
/// not count.
[[nodiscard]] QStringList foldersOfNoPhoto(Connection& connection, const NamedFiles& namedFiles);

/// Sidecars of albums and folders that are not there. Package-relative.
[[nodiscard]] QStringList sidecarsOfNothing(Connection& connection);

/// What writing beside a file and renaming, or a restore, left when it was cut off, wherever it
/// lies but in Masters. Package-relative.
[[nodiscard]] QStringList unfinished(const QString& package);

} // namespace StrayFiles
