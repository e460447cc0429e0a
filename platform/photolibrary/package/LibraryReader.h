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

/// Photos out of the trash by event, the earliest event first, then by date.
[[nodiscard]] QList<PhotoFacts> photos(Connection& connection);
/// Photos in the trash; `bytes` holds both masters of a pair.
[[nodiscard]] QList<PhotoFacts> trashedPhotos(Connection& connection);
/// The ids of the user's regular albums, in the order of their making: none of the library's fixed
/// ones, not hidden, not in the trash, not published to a service.
[[nodiscard]] QList<qint64> regularAlbums(Connection& connection);
/// Whether the album is one of them.
[[nodiscard]] bool isRegularAlbum(Connection& connection, qint64 id);
/// Counts, and what the integrity check finds; `namedFiles`: package-relative files that this
/// program's own journal knows, no problems of the library.
[[nodiscard]] LibrarySummary summary(Connection& connection, const QSet<QString>& namedFiles);

} // namespace LibraryReader
