#pragma once

#include "Changes.h"
#include "Connection.h"
#include "PackageFiles.h"
#include "TurnJournal.h"

#include <QSet>

/// Clearing away what a crash left. Only with the write lock of the databases held.
namespace Recovery
{

/// What is left to do after it.
struct Outcome {
    Changes changes;                            ///< what sidecars and catalogues have to follow
    QSet<qint64> unsettled;                     ///< turns of whose files some could not be removed
    QList<PackageFiles::NotRemoved> notRemoved; ///< those files
};

/// Removes dead journals beside the databases, the files of turns that were not committed, what a
/// committed deletion left, and what was unfinished of pictures, sidecars and catalogues. Any file
/// that the journal does not name stays. `lagging`: what has to follow though no turn tells so.
/// Errors: SQLite::Exception.
[[nodiscard]] Outcome
run(Connection& connection, const QList<JournaledTurn>& turns, const Changes& lagging);

/// The package-relative files that the journal names, and folders with files that are to go.
[[nodiscard]] QSet<QString> named(const QList<JournaledTurn>& turns);

} // namespace Recovery
