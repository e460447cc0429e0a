#pragma once

#include "Writer.h"

#include <QList>
#include <QStringList>

/// What the library's trash does to rows. Photos are given by the ids of their visible versions;
/// a pair of a RAW and a JPEG file is one photo with two masters. Errors: SQLite::Exception.
namespace TrashRows
{

/// What a deletion leaves on disk, as paths relative to the package; all of it lies below Masters,
/// Previews, Thumbnails and Database/Versions. To be removed after the commit in this order, so
/// that nothing can bring a deleted photo back.
struct Leftovers {
    QStringList folders;      ///< of sidecars, then of rendered pictures; each of one photo alone
    QStringList files;        ///< sidecars of versions whose masters stay, then originals
    QStringList emptyFolders; ///< to be removed if nothing is left in them, inner ones first
};

/// Moves photos to the trash; those that are in it already stay as they are. Albums and keywords
/// are kept for the day they come back. Returns how many were moved.
int moveToTrash(Writer& writer, const QList<qint64>& versionIds);

/// Takes photos out of the trash; others stay as they are. Returns how many.
int restore(Writer& writer, const QList<qint64>& versionIds);

/// Deletes photos that are in the trash, with everything the databases hold of them; others stay as
/// they are. Originals outside the package and files that another photo uses are no leftovers.
[[nodiscard]] Leftovers deleteForGood(Writer& writer, const QList<qint64>& versionIds);

} // namespace TrashRows
