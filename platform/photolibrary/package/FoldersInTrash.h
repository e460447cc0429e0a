#pragma once

#include "Connection.h"

#include <QSet>
#include <QString>

/// Folders and events that the user threw away. No library with an album in such a folder was at
/// hand; that the album is not seen then, whatever its own row says, is taken from how the photo
/// application shows events in the trash. Errors: SQLite::Exception.
namespace FoldersInTrash
{

/// The uuids of those in the trash and of all that lie within them.
[[nodiscard]] QSet<QString> of(Connection& connection);

} // namespace FoldersInTrash
