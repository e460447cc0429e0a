#pragma once

#include "CareProgress.h"
#include "Finding.h"
#include "Result.h"

#include <functional>

class PhotoLibraryPrivate;

/// Mends what follows from the databases: see PhotoLibrary::repair().
namespace LibraryRepair
{

[[nodiscard]] Result<RepairReport> run(PhotoLibraryPrivate& library,
                                       const std::function<bool()>& shouldStop,
                                       const CareProgress::Tell& tell);

} // namespace LibraryRepair
