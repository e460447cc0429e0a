#pragma once

#include "Connection.h"

#include <QList>

/// The user's regular albums: none of the library's fixed ones, not hidden, not in the trash nor in
/// a folder that is, not published to a service. Errors: SQLite::Exception.
namespace RegularAlbums
{

/// Their ids, in the order of their making.
[[nodiscard]] QList<qint64> ids(Connection& connection);
/// Whether the album is one of them.
[[nodiscard]] bool holds(Connection& connection, qint64 id);

} // namespace RegularAlbums
