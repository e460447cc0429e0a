#pragma once

#include "Connection.h"
#include "Result.h"
#include "SidecarOutput.h"

/// The two property lists that tell of the library as a whole, given to `output` as they should be;
/// see Sidecars::write().
namespace LibrarySidecars
{

/// Database/Keywords.plist: every keyword that the library defines.
[[nodiscard]] Result<void> putKeywords(Connection& connection, SidecarOutput& output);

/// Database/DataModelVersion.plist: the schema's version, counts, and the settings that outlive a
/// rebuild of the databases.
[[nodiscard]] Result<void> putDataModel(Connection& connection, SidecarOutput& output);

} // namespace LibrarySidecars
