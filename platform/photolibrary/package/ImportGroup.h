#pragma once

#include "Connection.h"

#include <QDateTime>
#include <QString>

/// The group folder of an import: "YYYY/MM/DD/YYYYMMDD-HHMMSS" below Masters, Previews, Thumbnails
/// and Database/Versions, in local time.
namespace ImportGroup
{

/// The first moment from `moment` on, by whole seconds, for which there is neither an import group
/// nor a folder.
[[nodiscard]] QDateTime freeStamp(Connection& connection, const QString& package, QDateTime moment);

/// "2026/11/21/20261121-104500".
[[nodiscard]] QString folder(const QDateTime& stamp);

/// The group folder of a master's sidecars: that of its file; of an original outside the package,
/// whose path tells nothing of it, that of its import. As the databases tell it, which may lead out
/// of the package; empty where they tell none.
[[nodiscard]] QString ofMaster(Connection& connection, const QString& master);

} // namespace ImportGroup
