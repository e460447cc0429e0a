#pragma once

#include "Connection.h"
#include "Finding.h"
#include "NamedFiles.h"

#include <QList>

/// What differs between the databases of a library and the files in its package.
/// Thread: the connection's. Errors: SQLite::Exception.
namespace FileFindings
{

/// Originals that are missing or have another size, rendered pictures that are missing, files that
/// nothing refers to, files in place of links to the databases. Of these only pictures can be
/// mended. `namedFiles` (package-relative) are passed over.
[[nodiscard]] QList<Finding> of(Connection& connection, const NamedFiles& namedFiles);

} // namespace FileFindings
