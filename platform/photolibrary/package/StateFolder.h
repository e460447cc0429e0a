#pragma once

#include <QString>

/// Where this program keeps what belongs to a library but does not lie in it. Nothing is created.
namespace StateFolder
{

/// A folder name for the library at `canonicalPath` with that database uuid: a copy of a library
/// at another place is another library.
[[nodiscard]] QString keyOf(const QString& canonicalPath, const QString& databaseUuid);
/// Folder of lock and journal.
[[nodiscard]] QString ofLibrary(const QString& key);
/// Folder of the dated backups.
[[nodiscard]] QString ofBackups(const QString& key);

} // namespace StateFolder
