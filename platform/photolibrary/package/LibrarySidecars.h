#pragma once

#include "Connection.h"
#include "Result.h"

/// The two property lists that tell of the library as a whole; see Sidecars::write().
namespace LibrarySidecars
{

/// Database/Keywords.plist: every keyword that the library defines.
[[nodiscard]] Result<void> writeKeywords(Connection& connection);

/// Database/DataModelVersion.plist: the schema's version, counts, and the settings that outlive a
/// rebuild of the databases.
[[nodiscard]] Result<void> writeDataModel(Connection& connection);

} // namespace LibrarySidecars
