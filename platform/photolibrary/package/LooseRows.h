#pragma once

#include "Finding.h"
#include "Writer.h"

#include <QList>

/// Rows that lead to something that is gone: an album's entry for a photo that was deleted, a photo
/// version without a master, a master without a photo, a photo's keyword. They say nothing of any
/// other photo, so that a library with some is written to. The ids that they name are never given
/// out again (ModelIds), so that no new photo, album or keyword can come to what an old one left
/// behind. Errors: SQLite::Exception.
namespace LooseRows
{

/// One finding for each kind. Repairable are those that only tie two things together, one of which
/// is gone; all others hold what somebody knew of a photo, and stay. None is where a master has no
/// photo: then the row of that photo may be lost, not the photo.
[[nodiscard]] QList<Finding> findings(Connection& connection);

/// Deletes the repairable ones. Counts, indexes and sidecars are not touched: DerivedRows::mend()
/// and Sidecars follow.
void mend(Writer& writer);

/// How many of the keywords that are assigned to the photo version of that modelId are gone.
[[nodiscard]] qsizetype lostKeywords(Connection& connection, qint64 version);

/// Whether an entry of the album of that modelId names a photo that is gone.
[[nodiscard]] bool losesPhoto(Connection& connection, qint64 album);

} // namespace LooseRows
