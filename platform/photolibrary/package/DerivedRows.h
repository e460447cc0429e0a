#pragma once

#include "Finding.h"
#include "Writer.h"

#include <QList>

/// What in the databases follows from other rows: statistics of events and albums, what photo
/// versions and records of pictures repeat of others, indexes, id counters and sets of ids.
/// Errors: SQLite::Exception.
namespace DerivedRows
{

/// What is wrong with them beyond what IntegrityCheck::ofFormAndRows() tells: first and last date
/// and key photo of events, sets of ids, and the id counters of photos' properties. None of it
/// keeps a library from being written to. All of it is repairable.
[[nodiscard]] QList<Finding> findings(Connection& connection);

/// Mends all that is wrong, as those and IntegrityCheck::ofFormAndRows() tell, and changes nothing
/// else. The counters and sets are left to ModelIds::mend().
void mend(Writer& writer);

} // namespace DerivedRows
