#pragma once

#include "Connection.h"
#include "LibraryFacts.h"

#include <QList>
#include <QSet>
#include <QString>

/// Plain reads of a library. Errors: SQLite::Exception. Columns of an unexpected type read as
/// nothing.
namespace LibraryReader
{

/// Photos out of the trash in the catalogue's order: by event, then by date.
[[nodiscard]] QList<PhotoFacts> photos(Connection& connection);
/// Photos in the trash; `bytes` holds both masters of a pair.
[[nodiscard]] QList<PhotoFacts> trashedPhotos(Connection& connection);
/// Counts, and what the integrity check finds; `namedFiles`: package-relative files that this
/// program's own journal knows, no problems of the library.
[[nodiscard]] LibrarySummary summary(Connection& connection, const QSet<QString>& namedFiles);

} // namespace LibraryReader
