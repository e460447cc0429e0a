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

} // namespace ImportGroup
