#pragma once

#include "Result.h"

#include <QString>

/// Dated copies of a library's databases and catalogues, outside the package. Any thread.
namespace Backup
{

/// Copies Database, AlbumData.xml, iLifeShared and Info.plist into a new dated folder below
/// `backupsFolder` and flushes it; the three databases that are in use through SQLite's own backup,
/// since no other code may open them. The first copy ever and the last three are kept. Returns the
/// new folder, which is named for its moment in UTC, behind all others. A copy that a crash cut off
/// is removed: only a library's writer may call this. Errors: NotWritable, OutOfSpace, Unreadable;
/// a copy that failed is removed again.
[[nodiscard]] Result<QString> make(const QString& package, const QString& backupsFolder);

} // namespace Backup
