#pragma once

#include "Result.h"

#include <QString>

/// Libraries with more photos than anybody would render, to measure what grows with a library.
namespace LargeLibrary
{

/// Makes the library at `package`, which must not exist: `photos` photos, of more than 2000 whole
/// multiples of that; every second one is RAW. Up to 2000 have the rows that an import writes, in
/// events of 50, and files of their own, which are hard links to those of one RAW and one JPEG
/// picture; the others are copies of these rows, in the same events and with the same files.
/// `raw` is a RAW file that imports are known to take.
/// Errors: as those of an import and of LibraryCreator.
[[nodiscard]] Result<void> make(const QString& package, int photos, const QString& raw);

} // namespace LargeLibrary
