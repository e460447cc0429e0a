#pragma once

#include "Writer.h"

#include <QList>

/// Ids of rows. The library counts them itself, one counter a table, and never gives one out twice:
/// sidecars, catalogues and other programs may still know the ids of rows that are gone.
/// Errors: SQLite::Exception.
namespace ModelIds
{

/// A new id for a row of the table, which may lie in any of the three databases. The counter can
/// lag behind the rows after a crash of the application; the id lies above both. It also enters the
/// table's set of all ids, where there is one.
[[nodiscard]] qint64 allocate(Writer& writer, const char* table);

/// Takes ids of rows that are deleted out of the table's set of all ids. The counter stays.
void release(Writer& writer, const char* table, const QList<qint64>& ids);

} // namespace ModelIds
