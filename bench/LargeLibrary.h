#pragma once

#include "Result.h"

#include <QString>

/// Libraries with more photos than anybody would render, to measure what grows with a library.
namespace LargeLibrary
{

/// Makes the library at `package`, which must not exist: `photos` photos, of more than 2000 whole
/// multiples of that; every second one is RAW. For each 50 photos there is an event, for each 200
/// an album, for each 100 a keyword, of both at least one; sizes of events and albums and numbers
/// of a photo's keywords are as uneven as people's are. Up to 2000 photos have the rows that an
/// import writes and files of their own, which are hard links to those of one RAW and one JPEG
/// picture; the others are copies of these rows, with the same files. Catalogues are there,
/// sidecars are not. `raw` is a RAW file that imports are known to take. Errors: as those of an
/// import and of LibraryCreator.
[[nodiscard]] Result<void> make(const QString& package, int photos, const QString& raw);

} // namespace LargeLibrary
