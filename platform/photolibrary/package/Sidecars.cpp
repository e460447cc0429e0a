#include "Sidecars.h"

#include "AtomicFile.h"
#include "LibrarySidecars.h"
#include "PathMapping.h"
#include "Queries.h"
#include "SidecarFile.h"
#include "SidecarValues.h"
#include "Uuid.h"
#include "VersionSidecar.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kProjectVersion = 8;
constexpr int kEventFolderType = 2;
constexpr int kQuerySubclass = 2;
constexpr int kRegularSubclass = 3;

/// Albums that the application makes up itself and keeps no sidecar of.
constexpr std::array kAlbumsWithoutSidecar{"allPhotosAlbum"_L1,
                                           "peopleAlbum"_L1,
                                           "allPlacedPhotosAlbum"_L1,
                                           "lastNMonthsAlbum"_L1,
                                           "flaggedAlbum"_L1,
                                           "rejectedAlbum"_L1};

/// Removes the sidecar of an object that is gone: a rebuild would bring the object back.
Result<void> removeFile(const QString& path)
{
    if (!QFileInfo::exists(path)) {
        return {};
    }
    QFile file(path);
    if (!file.remove()) {
        return Error{ErrorCode::NotWritable,
                     u"\"%1\" cannot be removed (%2)."_s.arg(path, file.errorString())};
    }
    return AtomicFile::flushFolder(QFileInfo(path).path());
}

/// Notes of an object as an array; no key when there are none.
void mirrorNotes(QVariantMap& content, Connection& connection, const QString& uuid)
{
    Sql::Query query(connection,
                     "SELECT attachedToUuid,createDate,modelId,note,propertyKey,uuid FROM RKNote"
                     " WHERE attachedToUuid=? ORDER BY modelId",
                     uuid);
    const QVariantList notes = SidecarValues::rows(query);
    SidecarValues::mirror(content, u"notes"_s, notes.isEmpty() ? QVariant() : QVariant(notes));
}

class SidecarWriter final
{
public:
    SidecarWriter(Connection& connection, double now)
        : m_connection(connection)
        , m_now(now)
    {
    }

    [[nodiscard]] Result<void> writeMaster(const QString& uuid);
    [[nodiscard]] Result<void> writeAlbum(const QString& uuid);
    [[nodiscard]] Result<void> writeFolder(const QString& uuid);

private:
    [[nodiscard]] QString folderOfMaster(const QString& uuid);
    [[nodiscard]] Result<void> writeMasterFile(const QString& uuid, const QString& folder);
    void mirrorAlbum(QVariantMap& content, Sql::Query& row);
    void mirrorCustomOrder(QVariantMap& content, const QString& uuid);

    Connection& m_connection;
    double m_now;
};

QString SidecarWriter::folderOfMaster(const QString& uuid)
{
    // The group of the import. The path of an original outside the package tells nothing of it.
    QString group = Sql::firstText(
        m_connection,
        "SELECT g.importYear||'/'||g.importMonth||'/'||g.importDay||'/'||g.importYear||"
        "g.importMonth||g.importDay||'-'||g.importTime FROM RKMaster m JOIN RKImportGroup g"
        " ON g.uuid=m.importGroupUuid WHERE m.uuid=? AND m.fileIsReference<>0",
        uuid);
    if (group.isEmpty()) {
        const QString path =
            Sql::firstText(m_connection, "SELECT imagePath FROM RKMaster WHERE uuid=?", uuid);
        group = path.section(u'/', 0, -2);
    }
    return PathMapping::inside(
        m_connection.packagePath(), "Database/Versions"_L1, group + u'/' + uuid);
}

Result<void> SidecarWriter::writeMaster(const QString& uuid)
{
    if (!Uuid::isSafeName(uuid)) {
        return {};
    }
    const QString folder = folderOfMaster(uuid);
    const bool exists =
        Sql::firstInteger(m_connection, "SELECT modelId FROM RKMaster WHERE uuid=?", uuid)
            .has_value();
    if (!exists || folder.isEmpty()) {
        return {}; // deleted for good, files and all; or a path that leads out of the package
    }
    if (Result<void> written = writeMasterFile(uuid, folder); !written.ok()) {
        return written;
    }
    const QList<qint64> versions = Sql::integers(
        m_connection, "SELECT modelId FROM RKVersion WHERE masterUuid=? ORDER BY modelId", uuid);
    for (const qint64 version : versions) {
        Result<void> written = VersionSidecar::write(m_connection, version, folder, m_now);
        if (!written.ok()) {
            return written;
        }
    }
    return {};
}

Result<void> SidecarWriter::writeMasterFile(const QString& uuid, const QString& folder)
{
    Result<SidecarFile> file =
        SidecarFile::open(folder + u"/Master.apmaster"_s, SidecarFile::Form::Binary);
    if (!file.ok()) {
        return file.error();
    }
    QVariantMap& content = file.value().content();
    {
        Sql::Query row(m_connection, "SELECT * FROM RKMaster WHERE uuid=?", uuid);
        if (!row.next()) {
            return {};
        }
        SidecarValues::mirrorRow(content, row, {u"hasAttachments"_s, u"hasNotes"_s});
    }
    const QString group = Sql::firstText(m_connection,
                                         "SELECT g.name FROM RKMaster m JOIN RKImportGroup g"
                                         " ON g.uuid=m.importGroupUuid WHERE m.uuid=?",
                                         uuid);
    SidecarValues::mirror(content, u"importGroup"_s, group.isNull() ? QVariant() : group);
    content.insert(u"version"_s, qlonglong{SidecarValues::kFormatVersion});
    mirrorNotes(content, m_connection, uuid);
    return file.value().saveStamped(m_now);
}

void SidecarWriter::mirrorAlbum(QVariantMap& content, Sql::Query& row)
{
    QVariantMap all;
    SidecarValues::mirrorRow(all, row);
    const std::array blobs{std::pair{u"filterData"_s, u"FilterInfo"_s},
                           std::pair{u"viewData"_s, u"ViewDictionary"_s},
                           std::pair{u"queryData"_s, u"UserQueryInfo"_s}};
    for (const auto& [column, key] : blobs) {
        SidecarValues::mirror(content, key, all.take(column));
    }
    if (all.value(u"albumSubclass"_s).toLongLong() != kQuerySubclass) {
        content.remove(u"UserQueryInfo"_s);
    }
    QVariantMap information = content.value(u"InfoDictionary"_s).toMap();
    for (int index = 0; index < row.columnCount(); ++index) {
        const QString name = QString::fromUtf8(row.column(index).getName());
        const bool isBlob = name.endsWith("Data"_L1);
        if (!isBlob) {
            SidecarValues::mirror(information, name, all.value(name));
        }
    }
    information.insert(u"version"_s, qlonglong{SidecarValues::kFormatVersion});
    content.insert(u"InfoDictionary"_s, information);
}

Result<void> SidecarWriter::writeAlbum(const QString& uuid)
{
    const bool none = std::ranges::any_of(kAlbumsWithoutSidecar,
                                          [&](QLatin1StringView name) { return uuid == name; });
    if (none || !Uuid::isSafeName(uuid)) {
        return {};
    }
    const QString path = m_connection.packagePath() + u"/Database/Albums/"_s + uuid + u".apalbum"_s;
    const std::optional<qint64> subclass =
        Sql::firstInteger(m_connection, "SELECT albumSubclass FROM RKAlbum WHERE uuid=?", uuid);
    const std::optional<qint64> id =
        Sql::firstInteger(m_connection, "SELECT modelId FROM RKAlbum WHERE uuid=?", uuid);
    if (!id) {
        return removeFile(path);
    }
    Result<SidecarFile> file = SidecarFile::open(path, SidecarFile::Form::Binary);
    if (!file.ok()) {
        return file.error();
    }
    {
        Sql::Query row(m_connection,
                       "SELECT albumSubclass,albumType,colorLabelIndex,createDate,"
                       "customSortAvailable,folderUuid,isFavorite,isHidden,isInTrash,isMagic,"
                       "modelId,name,sortAscending,sortKeyPath,uuid,queryFolderUuid,filterData,"
                       "viewData,queryData FROM RKAlbum WHERE uuid=?",
                       uuid);
        if (row.next()) {
            mirrorAlbum(file.value().content(), row);
        }
    }
    if (subclass == kRegularSubclass) {
        SidecarValues::mirrorNames(
            file.value().content(),
            u"versionUuids"_s,
            Sql::texts(m_connection,
                       "SELECT v.uuid FROM RKAlbumVersion a JOIN RKVersion v"
                       " ON v.modelId=a.versionId WHERE a.albumId=? ORDER BY a.modelId",
                       *id));
    }
    return file.value().save();
}

void SidecarWriter::mirrorCustomOrder(QVariantMap& content, const QString& uuid)
{
    QVariantMap orders = content.value(u"CustomOrderList"_s).toMap();
    QVariantList objects;
    const QStringList uuids =
        Sql::texts(m_connection,
                   "SELECT objectUuid FROM RKCustomSortOrder WHERE purpose='default'"
                   " AND containerUuid=? ORDER BY orderNumber",
                   uuid);
    for (const QString& object : uuids) {
        objects.append(object);
    }
    SidecarValues::mirror(orders, u"default"_s, objects.isEmpty() ? QVariant() : QVariant(objects));
    SidecarValues::mirror(
        content, u"CustomOrderList"_s, orders.isEmpty() ? QVariant() : QVariant(orders));
}

Result<void> SidecarWriter::writeFolder(const QString& uuid)
{
    if (!Uuid::isSafeName(uuid)) {
        return {};
    }
    const QString path =
        m_connection.packagePath() + u"/Database/Folders/"_s + uuid + u".apfolder"_s;
    const std::optional<qint64> type =
        Sql::firstInteger(m_connection, "SELECT folderType FROM RKFolder WHERE uuid=?", uuid);
    const bool exists =
        Sql::firstInteger(m_connection, "SELECT modelId FROM RKFolder WHERE uuid=?", uuid)
            .has_value();
    if (!exists) {
        return removeFile(path);
    }
    Result<SidecarFile> file = SidecarFile::open(path, SidecarFile::Form::Binary);
    if (!file.ok()) {
        return file.error();
    }
    QVariantMap& content = file.value().content();
    const bool isEvent = type == kEventFolderType;
    QStringList omitted{u"versionCount"_s,
                        u"minImageDate"_s,
                        u"maxImageDate"_s,
                        u"minImageTimeZoneName"_s,
                        u"maxImageTimeZoneName"_s};
    if (!isEvent) {
        omitted.append(u"automaticallyGenerateFullSizePreviews"_s);
    }
    {
        Sql::Query row(m_connection, "SELECT * FROM RKFolder WHERE uuid=?", uuid);
        if (row.next()) {
            SidecarValues::mirrorRow(content, row, omitted);
        }
    }
    content.insert(u"version"_s, qlonglong{SidecarValues::kFormatVersion});
    if (isEvent) {
        content.insert(u"projectVersion"_s, qlonglong{kProjectVersion});
        content.insert(u"projectCompatibleBackToVersion"_s, qlonglong{kProjectVersion});
    }
    mirrorCustomOrder(content, uuid);
    mirrorNotes(content, m_connection, uuid);
    return file.value().save();
}

} // namespace

Result<void> Sidecars::write(Connection& connection, const Changes& changes, double now)
{
    SidecarWriter writer(connection, now);
    Result<void> outcome;
    const auto note = [&outcome](const Result<void>& written) {
        outcome = outcome.ok() ? written : outcome;
    };
    for (const QString& uuid : changes.masters) {
        note(writer.writeMaster(uuid));
    }
    for (const QString& uuid : changes.albums) {
        note(writer.writeAlbum(uuid));
    }
    for (const QString& uuid : changes.folders) {
        note(writer.writeFolder(uuid));
    }
    if (changes.keywords) {
        note(LibrarySidecars::writeKeywords(connection));
    }
    if (changes.adminData || !changes.masters.isEmpty()) {
        note(LibrarySidecars::writeDataModel(connection)); // it tells how many there are
    }
    return outcome;
}
