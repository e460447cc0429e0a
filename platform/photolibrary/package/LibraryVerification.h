#pragma once

#include "CareProgress.h"
#include "Changes.h"
#include "Connection.h"
#include "Finding.h"
#include "NamedFiles.h"

#include <QList>
#include <QString>

#include <functional>

/// Compares databases, sidecars, catalogues and files of a library. Nothing is changed.
/// Thread: the connection's. Errors: SQLite::Exception.
namespace LibraryVerification
{

/// Everything that differs, databases first; empty for a library in which all agrees. Of damaged
/// databases nothing but the damage is told, since what they say of the rest proves nothing.
/// `namedFiles` (package-relative): files of unfinished turns, which are no findings. `shouldStop`,
/// which may be empty, is asked now and then; yes raises SQLITE_INTERRUPT. `tell`: is told each
/// stage up to Files.
[[nodiscard]] QList<Finding> findings(Connection& connection,
                                      const NamedFiles& namedFiles,
                                      const std::function<bool()>& shouldStop,
                                      const CareProgress::Tell& tell = {});

/// Every object that a sidecar tells of.
[[nodiscard]] Changes allObjects(Connection& connection);

} // namespace LibraryVerification
