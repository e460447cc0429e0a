#pragma once

#include "PhotoLibrary.h"
#include "Result.h"

#include <memory>

class PhotoLibraryPrivate;

/// The way from a path to an open library: recognise, check, lock, recover.
namespace LibraryOpening
{

/// See PhotoLibrary::open().
[[nodiscard]] Result<std::shared_ptr<PhotoLibraryPrivate>> open(const QString& path,
                                                                const OpenOptions& options);

} // namespace LibraryOpening
