#pragma once

#include "Changes.h"
#include "Connection.h"
#include "TurnJournal.h"

#include <QSet>

/// Clearing away what a crash left. Only with the write lock of the databases held.
namespace Recovery
{

/// Removes dead journals beside the databases, the files of turns that were not committed, and
/// what a committed deletion left. Returns what sidecars and catalogues have to follow. Any file
/// that the journal does not name stays. Errors: SQLite::Exception.
[[nodiscard]] Changes run(Connection& connection, const QList<JournaledTurn>& turns);

/// The package-relative files that the journal names.
[[nodiscard]] QSet<QString> named(const QList<JournaledTurn>& turns);

} // namespace Recovery
