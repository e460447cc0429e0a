#pragma once

#include "Result.h"

#include <QString>

/// Makes new, empty libraries: of the form that iPhoto 9.6.1 makes, with its built-in albums,
/// folders and keywords.
namespace LibraryCreator
{

/// Makes the package at `packagePath`, which must not exist or be an empty folder; its parent must
/// exist. On error nothing of it stays.
/// Errors: NotWritable (also: there is something already), OutOfSpace, NotFound.
[[nodiscard]] Result<void> create(const QString& packagePath);

} // namespace LibraryCreator
