#pragma once

#include "Connection.h"

#include <QList>
#include <QStringList>

/// Which rows of masters and of versions as imported follow a photo into the trash and out of the
/// library. Errors: SQLite::Exception.
namespace MastersOfPhoto
{

/// The uuids of the masters that a visible version shows: its own first, then the other one of a
/// pair of a RAW and a JPEG file, unless that is a photo in its own right.
[[nodiscard]] QStringList of(Connection& connection, qint64 versionId);

/// Whether a visible version outside the trash shows the master.
[[nodiscard]] bool isShown(Connection& connection, const QString& master);

/// The ids of the masters that have no version but the one as imported, not even as the other one
/// of a pair: rows of photos are lost. Photos in the trash count, and versions that somebody hid.
[[nodiscard]] QList<qint64> withoutPhoto(Connection& connection);

/// The ids of the versions of a master that nobody sees.
[[nodiscard]] QList<qint64> hiddenVersions(Connection& connection, const QString& master);

} // namespace MastersOfPhoto
