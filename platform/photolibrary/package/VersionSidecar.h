#pragma once

#include "Connection.h"
#include "Result.h"

#include <QString>

/// The sidecar of one version of a photo, "Version-N.apversion".
namespace VersionSidecar
{

/// Writes it into `folder`, the sidecar folder of the version's master; see Sidecars::write().
[[nodiscard]] Result<void>
write(Connection& connection, qint64 version, const QString& folder, double now);

} // namespace VersionSidecar
