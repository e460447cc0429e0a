#pragma once

#include "Connection.h"

#include <QHash>
#include <QString>

/// The disks that referenced masters lie on, as the Mac knew them, and where the user says they are
/// here (Connection::volumeFolders()). What the library itself says of a volume, that it is offline
/// or not, was true on the Mac and is not asked. Errors: SQLite::Exception.
namespace Volumes
{

/// The name in the settings for the Mac's own disk.
inline constexpr QLatin1StringView kOwnDisk("/");

struct Volume {
    QString name;
    QString folder; ///< where it is here; empty: not at hand
};

/// The volumes that the library knows, by uuid, and the Mac's own disk by the empty one.
[[nodiscard]] QHash<QString, Volume> all(Connection& connection);

/// The volume of that uuid; an unknown one is not at hand.
[[nodiscard]] Volume of(Connection& connection, const QString& uuid);

} // namespace Volumes
