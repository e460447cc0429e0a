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

/// Asks for the ids of the masters that have no version but the one as imported, not even as the
/// other one of a pair: rows of photos are lost. Photos in the trash count, and versions that
/// somebody hid. The signs keep SQLite to the indexes of masters.
inline constexpr const char* kWithoutPhoto =
    "SELECT m.modelId FROM RKMaster m WHERE NOT EXISTS (SELECT 1 FROM RKVersion v"
    " WHERE v.masterUuid = m.uuid AND (+v.showInLibrary <> 0 OR +v.isOriginal = 0))"
    " AND NOT EXISTS (SELECT 1 FROM RKVersion v"
    " WHERE v.rawMasterUuid = m.uuid AND (+v.showInLibrary <> 0 OR +v.isOriginal = 0))"
    " AND NOT EXISTS (SELECT 1 FROM RKVersion v"
    " WHERE v.nonRawMasterUuid = m.uuid AND (+v.showInLibrary <> 0 OR +v.isOriginal = 0))"
    " AND NOT EXISTS (SELECT 1 FROM RKMaster a JOIN RKVersion v ON v.masterUuid = a.uuid"
    " WHERE (a.alternateMasterUuid = m.uuid OR a.uuid = m.alternateMasterUuid)"
    " AND (+v.showInLibrary <> 0 OR +v.isOriginal = 0)) ORDER BY m.modelId";

/// Asks for those of them that have no version at all, not even as the other one of a pair.
inline constexpr const char* kWithoutVersion =
    "SELECT m.modelId FROM RKMaster m"
    " WHERE NOT EXISTS (SELECT 1 FROM RKVersion v WHERE v.masterUuid = m.uuid)"
    " AND NOT EXISTS (SELECT 1 FROM RKVersion v WHERE v.rawMasterUuid = m.uuid)"
    " AND NOT EXISTS (SELECT 1 FROM RKVersion v WHERE v.nonRawMasterUuid = m.uuid)"
    " AND NOT EXISTS (SELECT 1 FROM RKMaster a JOIN RKVersion v ON v.masterUuid = a.uuid"
    " WHERE a.alternateMasterUuid = m.uuid OR a.uuid = m.alternateMasterUuid) ORDER BY m.modelId";

/// The ids of the versions of a master that nobody sees.
[[nodiscard]] QList<qint64> hiddenVersions(Connection& connection, const QString& master);

} // namespace MastersOfPhoto
