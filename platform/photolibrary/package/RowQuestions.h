#pragma once

#include <string>

/// Questions about rows whose answers are told and mended alike. The first column of each answer
/// names what is wrong to a person.
namespace RowQuestions
{

/// Name and uuid of events that count neither the photos that are shown nor all that are not in the
/// trash. The signs keep SQLite to the index of the event: by that of the trash it would look at
/// nearly every photo of the library for each event.
inline constexpr const char* kMiscountedEvents =
    "SELECT f.name, f.uuid FROM RKFolder f WHERE f.folderType = 2 AND f.isMagic = 0"
    " AND f.versionCount <>"
    " (SELECT count(*) FROM RKVersion v WHERE v.projectUuid = f.uuid AND +v.showInLibrary = 1"
    " AND +v.isInTrash = 0 AND +v.isHidden = 0) AND f.versionCount <>"
    " (SELECT count(*) FROM RKVersion v WHERE v.projectUuid = f.uuid AND +v.showInLibrary = 1"
    " AND +v.isInTrash = 0)";

/// Name and modelId of regular albums that miscount. Entries whose photo is gone may be counted or
/// not.
inline constexpr const char* kMiscountedAlbums =
    "SELECT a.name, a.modelId FROM RKAlbum a WHERE a.albumSubclass = 3"
    " AND coalesce(a.versionCount, 0) <>"
    " (SELECT count(*) FROM RKAlbumVersion v WHERE v.albumId = a.modelId)"
    " AND coalesce(a.versionCount, 0) <> (SELECT count(*) FROM RKAlbumVersion v JOIN RKVersion p"
    " ON p.modelId = v.versionId WHERE v.albumId = a.modelId)";

/// modelId and masterUuid of rows of photos that name a text which is gone. A photo's sidecar,
/// which would follow the databases, may still tell it.
inline constexpr const char* kLostTexts =
    "SELECT p.modelId, v.masterUuid FROM prop.RKIptcProperty p"
    " JOIN RKVersion v ON v.modelId = p.versionId"
    " LEFT JOIN prop.RKUniqueString s ON s.modelId = p.stringId WHERE s.modelId IS NULL";
inline constexpr const char* kLostCameraTexts =
    "SELECT p.modelId, v.masterUuid FROM prop.RKExifStringProperty p"
    " JOIN RKVersion v ON v.modelId = p.versionId"
    " LEFT JOIN prop.RKUniqueString s ON s.modelId = p.stringId"
    " WHERE p.stringId IS NOT NULL AND s.modelId IS NULL";
/// modelId, versionId and keywordId of rows of photos that name a keyword which is gone. Sidecars
/// that still tell it keep it.
inline constexpr const char* kLostKeywords =
    "SELECT k.modelId, k.versionId, k.keywordId FROM RKKeywordForVersion k"
    " JOIN RKVersion v ON v.modelId = k.versionId"
    " LEFT JOIN RKKeyword w ON w.modelId = k.keywordId WHERE w.modelId IS NULL";

/// The question that asks for one column of another's answers.
[[nodiscard]] inline std::string column(const char* name, const char* question)
{
    return std::string("SELECT ") + name + " FROM (" + question + ')';
}

} // namespace RowQuestions
