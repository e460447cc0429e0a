#pragma once

#include "Result.h"

#include <QString>

/// What a crash in the midst of a commit over the three databases left beside them. Any thread.
namespace HotJournals
{

/// Whether SQLite can tell at the package's present path if that commit happened. It did when the
/// super-journal is gone that the databases' journals name; they name it by its absolute path, so
/// that in a package that was moved since, or lies on a disk mounted elsewhere, it seems gone
/// though it is there, and a half-written commit would count as done. To be asked before SQLite
/// opens the databases, also for reading. Nothing is changed. Errors: Unreadable, with the path at
/// which the databases have to be opened, or with a journal that is no plain file: SQLite would
/// wait for somebody to write into a pipe.
[[nodiscard]] Result<void> canBeDecidedHere(const QString& package);

/// Whether SQLite will undo something when it opens the databases: there is a journal, and nobody
/// who may be writing it has locked its database, as far as the system tells (FileLocks). To be
/// asked before as well. Nothing is changed.
[[nodiscard]] bool areThere(const QString& package);

} // namespace HotJournals
