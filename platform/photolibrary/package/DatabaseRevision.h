#pragma once

#include "Connection.h"

#include <QList>

/// Tells whether anybody else has changed the databases: two revisions that one connection tells
/// are equal when no other connection, of whatever program, committed anything between. What the
/// connection itself committed does not count.
namespace DatabaseRevision
{

/// A number for each database, taken one after another: a change that is committed meanwhile is
/// told by the next revision at the latest. Thread: the connection's. Errors: SQLite::Exception,
/// also where a database file is no longer the one that the connection opened.
[[nodiscard]] QList<qint64> of(Connection& connection);

} // namespace DatabaseRevision
