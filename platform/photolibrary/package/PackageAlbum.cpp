#include "PackageAlbum.h"

#include "PackagePhoto.h"
#include "Queries.h"
#include "RegularAlbums.h"

using namespace Qt::StringLiterals;

namespace
{

/// Any FourCC but that of a regular album.
constexpr quint32 kOtherAlbumType = 0x6F746872; // 'othr'

} // namespace

PackageAlbum::PackageAlbum(std::shared_ptr<PhotoLibraryPrivate> library, qint64 id, Kind kind)
    : m_library(std::move(library))
    , m_id(id)
    , m_kind(kind)
{
}

QString PackageAlbum::name()
{
    return m_library->read([this](Connection& connection) {
        return Sql::firstText(connection, "SELECT name FROM RKAlbum WHERE modelId = ?", m_id);
    });
}

quint32 PackageAlbum::type()
{
    const bool regular = m_library->read(
        [this](Connection& connection) { return RegularAlbums::holds(connection, m_id); });
    return regular ? kRegularAlbumType : kOtherAlbumType;
}

QList<qint64> PackageAlbum::photoIds()
{
    if (m_kind == Kind::LastImport) {
        if (const std::optional<QList<qint64>> own = m_library->lastImport()) {
            return *own;
        }
    }
    return m_library->read([this](Connection& connection) {
        if (m_kind == Kind::PhotoLibrary) {
            return Sql::integers(connection,
                                 "SELECT v.modelId FROM RKVersion v LEFT JOIN RKFolder f"
                                 " ON f.uuid = v.projectUuid WHERE v.showInLibrary = 1"
                                 " AND v.isInTrash = 0"
                                 " ORDER BY f.minImageDate, f.modelId, v.imageDate, v.modelId");
        }
        return Sql::integers(connection,
                             "SELECT v.modelId FROM RKAlbumVersion av JOIN RKVersion v"
                             " ON v.modelId = av.versionId WHERE av.albumId = ?"
                             " AND v.isInTrash = 0 ORDER BY v.imageDate, v.modelId",
                             m_id);
    });
}

QList<PhotoPtr> PackageAlbum::photos()
{
    QList<PhotoPtr> photos;
    const QList<qint64> ids = photoIds();
    photos.reserve(ids.size());
    for (const qint64 id : ids) {
        photos.append(std::make_shared<PackagePhoto>(m_library, id));
    }
    return photos;
}

void PackageAlbum::importFrom(const QString& path, bool forceCopy, const AlbumPtr& target)
{
    if (!forceCopy) {
        // A file that stays where it is would be lost with its folder.
        throw ScriptingException(u"ImportFailed"_s,
                                 u"Pictures are only imported by copying them."_s);
    }
    std::optional<qint64> album;
    if (target) {
        const qint64 id = target->id();
        const bool regular = m_library->read(
            [id](Connection& connection) { return RegularAlbums::holds(connection, id); });
        album = regular ? std::optional<qint64>(id) : std::nullopt;
    }
    m_library->importPicture(path, album);
}
