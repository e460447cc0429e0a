#pragma once

#include "Connection.h"

#include <QSet>
#include <QString>
#include <QStringList>

/// Whether a library's databases agree with themselves and with the files in the package.
namespace IntegrityCheck
{

/// One English sentence for each problem; empty for a sound library. Missing masters, and sidecars
/// or catalogues that lag behind the databases, are no problems here, nor are files that
/// `namedFiles` (package-relative) holds. Nothing is changed. Errors: SQLite::Exception.
[[nodiscard]] QStringList problems(Connection& connection, const QSet<QString>& namedFiles);

} // namespace IntegrityCheck
