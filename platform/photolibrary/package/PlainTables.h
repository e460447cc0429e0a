#pragma once

#include "Connection.h"
#include "Result.h"

/// What a library's databases tell are rows that were stored in tables. A view, a virtual table or
/// a computed column makes up what it is asked for, without end or as large as it likes, when it is
/// read. iPhoto has none in the place of a table.
namespace PlainTables
{

/// Whether all three databases are without views and computed columns, and their known tables no
/// virtual ones. Nothing that they would make up is asked for. Errors: Damaged, naming database and
/// remedy; SQLite::Exception.
[[nodiscard]] Result<void> check(Connection& connection);

} // namespace PlainTables
