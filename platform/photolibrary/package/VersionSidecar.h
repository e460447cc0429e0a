#pragma once

#include "Connection.h"
#include "Result.h"
#include "SidecarOutput.h"

#include <QString>

/// The sidecar of one version of a photo, "Version-N.apversion".
namespace VersionSidecar
{

/// Gives it to `output` as it should be in `folder`, the sidecar folder of the version's master;
/// see Sidecars::write().
[[nodiscard]] Result<void>
put(Connection& connection, qint64 version, const QString& folder, SidecarOutput& output);

} // namespace VersionSidecar
