#pragma once

#include "Connection.h"
#include "LibraryFacts.h"
#include "NamedFiles.h"

#include <QList>
#include <QString>

/// Plain reads of a library. What a call reads, it reads as of one moment: a photo's turn that
/// another connection commits meanwhile is seen wholly or not at all. Errors: SQLite::Exception.
/// Columns of an unexpected type read as nothing.
namespace LibraryReader
{

/// Photos out of the trash by event, the earliest event first, then by date.
[[nodiscard]] QList<PhotoFacts> photos(Connection& connection);
/// Photos in the trash; `bytes` is what emptying it frees: both masters of a pair, no referenced
/// one.
[[nodiscard]] QList<PhotoFacts> trashedPhotos(Connection& connection);
/// Counts, and what the integrity check finds.
[[nodiscard]] LibrarySummary summary(Connection& connection, const NamedFiles& namedFiles);

} // namespace LibraryReader
