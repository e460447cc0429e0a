#include "PhotoFiles.h"

#include "ImportGroup.h"
#include "PackageFiles.h"
#include "PathMapping.h"
#include "Queries.h"
#include "SystemLog.h"
#include "Uuid.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

constexpr std::array kRoots{"Database/Versions"_L1, "Previews"_L1, "Thumbnails"_L1, "Masters"_L1};

/// Whether a path of the databases stays below the folder it is relative to.
bool isInside(const QString& path)
{
    const QStringList parts = path.split('/'_L1);
    return std::all_of(parts.begin(), parts.end(), Uuid::isSafeName);
}

QString folderOf(const QString& path)
{
    return path.section('/'_L1, 0, -2);
}

/// File systems of the Mac tell neither case nor composition of letters apart.
QString alike(const QString& path)
{
    return path.normalized(QString::NormalizationForm_C).toCaseFolded();
}

/// Package-relative path of a master as it is spelled on disk: copying from a Mac may have changed
/// the composition of its name, and case never mattered there. Empty for what leads out.
QString spelled(const QString& package, const QString& path)
{
    return PathMapping::inside(package, "Masters"_L1, path).mid(package.size() + 1);
}

} // namespace

PhotoFiles::PhotoFiles(Connection& connection)
    : m_connection(connection)
{
}

void PhotoFiles::addVersion(qint64 versionId)
{
    const QString uuid =
        Sql::firstText(m_connection, "SELECT uuid FROM RKVersion WHERE modelId=?", versionId);
    const QString master =
        Sql::firstText(m_connection,
                       "SELECT m.imagePath FROM RKVersion v JOIN RKMaster m ON "
                       "m.uuid=v.masterUuid WHERE v.modelId=? AND m.fileIsReference=0",
                       versionId);
    if (!Uuid::isSafeName(uuid)) {
        return;
    }
    if (!master.isNull()) {
        const QString beside = folderOf(master) + '/'_L1 + uuid + "/any"_L1;
        addRendered(u"Previews"_s, beside, uuid);
        addRendered(u"Thumbnails"_s, beside, uuid);
    }
    const QStringList previews =
        Sql::texts(m_connection,
                   "SELECT fullSizePreviewPath FROM RKImageProxyState WHERE versionId=?",
                   versionId);
    for (const QString& path : previews) {
        addRendered(u"Previews"_s, path, uuid);
    }
    const QStringList thumbnails =
        Sql::texts(m_connection,
                   "SELECT thumbnailPath FROM RKImageProxyState WHERE versionId=?1 UNION "
                   "SELECT miniThumbnailPath FROM RKImageProxyState WHERE versionId=?1",
                   versionId);
    for (const QString& path : thumbnails) {
        addRendered(u"Thumbnails"_s, path, uuid);
    }
}

void PhotoFiles::addRendered(const QString& root, const QString& path, const QString& version)
{
    // A folder that is not named after the version may be another photo's as well.
    const QString folder = folderOf(path);
    if (!isInside(path) || folder.section('/'_L1, -1) != version || folder == version) {
        return;
    }
    m_renderedFolders.append(root + '/'_L1 + folder);
    m_groups.insert(folderOf(folder));
}

QString PhotoFiles::groupOf(const QString& master) const
{
    const QString group = ImportGroup::ofMaster(m_connection, master);
    return Uuid::isSafeName(master) && isInside(group) ? group : QString();
}

void PhotoFiles::addMaster(const QString& uuid)
{
    const QString path = Sql::firstText(
        m_connection, "SELECT imagePath FROM RKMaster WHERE uuid=? AND fileIsReference=0", uuid);
    if (!Uuid::isSafeName(uuid)) {
        return;
    }
    if (const QString group = groupOf(uuid); !group.isEmpty()) {
        m_sidecarFolders.append("Database/Versions/"_L1 + group + '/'_L1 + uuid);
        m_groups.insert(group);
    }
    if (isInside(path)) {
        m_masters.append(path);
    }
}

void PhotoFiles::addVersionSidecar(const QString& master, qint64 versionNumber)
{
    const QString group = groupOf(master);
    const bool isTaken = Sql::firstInteger(m_connection,
                                           "SELECT modelId FROM RKVersion WHERE masterUuid=? AND"
                                           " versionNumber=?",
                                           master,
                                           versionNumber)
                             .has_value();
    if (!group.isEmpty() && !isTaken) {
        // No pattern to fill in: a uuid may hold "%1" itself.
        m_sidecars.append("Database/Versions/"_L1 + group + '/'_L1 + master + "/Version-"_L1 +
                          QString::number(versionNumber) + ".apversion"_L1);
    }
}

bool PhotoFiles::isKeptOutside(const QString& path) const
{
    if (!PackageFiles::leadsOut(m_connection.packagePath(), path)) {
        return false;
    }
    systemLog(u"\"%1/%2\" lies outside of the library, behind a link, and is not removed."_s.arg(
        m_connection.packagePath(), path));
    return true;
}

TrashRows::Leftovers PhotoFiles::leftovers()
{
    QSet<QString> used;
    const QStringList remaining =
        Sql::texts(m_connection, "SELECT imagePath FROM RKMaster WHERE fileIsReference=0");
    for (const QString& path : remaining) {
        used.insert(alike(path));
    }
    TrashRows::Leftovers result;
    result.files = m_sidecars;
    result.folders = m_sidecarFolders + m_renderedFolders;
    result.folders.removeDuplicates();
    result.folders.removeIf([this](const QString& folder) { return isKeptOutside(folder); });
    for (const QString& path : std::as_const(m_masters)) {
        if (!used.contains(alike(path))) {
            result.files.append(spelled(m_connection.packagePath(), path));
        }
    }
    result.files.removeAll(QString());
    result.files.removeDuplicates();
    result.files.removeIf([this](const QString& file) { return isKeptOutside(file); });
    QStringList folders;
    for (const QString& group : std::as_const(m_groups)) {
        for (QString folder = group; !folder.isEmpty(); folder = folderOf(folder)) {
            folders.append(folder);
        }
    }
    folders.removeDuplicates();
    std::ranges::sort(folders, [](const QString& left, const QString& right) {
        return left.count('/'_L1) > right.count('/'_L1);
    });
    for (const auto root : kRoots) {
        for (const QString& folder : std::as_const(folders)) {
            result.emptyFolders.append(root + '/'_L1 + folder);
        }
    }
    return result;
}
