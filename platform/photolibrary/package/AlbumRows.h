#pragma once

#include "Writer.h"

#include <QList>
#include <QString>

/// Rows of albums and of what is in them. Errors: SQLite::Exception.
namespace AlbumRows
{

/// A new regular album of the user's at the end of the top level; returns its modelId.
[[nodiscard]] qint64 createAlbum(Writer& writer, const QString& name);

/// The album that every folder and event has of its own; returns its uuid. It has no members of its
/// own: what is in an event is told by the photos.
[[nodiscard]] QString
createImplicitAlbum(Writer& writer, const QString& name, const QString& folderUuid);

/// Adds photos (ids of their visible versions) to a regular album, each once, in this order.
/// Unknown albums and photos are left alone.
void addPhotos(Writer& writer, qint64 album, const QList<qint64>& versionIds);
/// The photos stay in the library.
void removePhotos(Writer& writer, qint64 album, const QList<qint64>& versionIds);
/// The album of the last import holds exactly these.
void replaceLastImport(Writer& writer, const QList<qint64>& versionIds);

/// Counts the members anew; for a caller that deleted some.
void updateCount(Writer& writer, qint64 album);
void setInTrash(Writer& writer, qint64 album, bool inTrash);

} // namespace AlbumRows
