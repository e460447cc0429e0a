#include "SidecarWriter.h"

#include "ImportGroup.h"
#include "LibrarySidecars.h"
#include "LooseRows.h"
#include "PathMapping.h"
#include "Schema.h"
#include "SidecarValues.h"
#include "Uuid.h"
#include "VersionSidecar.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kEventFolderType = 2;
constexpr int kRegularSubclass = 3;

/// Albums that the application makes up itself and keeps no sidecar of.
constexpr std::array kAlbumsWithoutSidecar{"allPhotosAlbum"_L1,
                                           "peopleAlbum"_L1,
                                           "allPlacedPhotosAlbum"_L1,
                                           "lastNMonthsAlbum"_L1,
                                           "flaggedAlbum"_L1,
                                           "rejectedAlbum"_L1};

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

} // namespace

QString SidecarWriter::folderOfMaster(Connection& connection, const QString& uuid)
{
    const QString group = ImportGroup::ofMaster(connection, uuid);
    return PathMapping::inside(
        connection.packagePath(), "Database/Versions"_L1, group + u'/' + uuid);
}

Result<void> SidecarWriter::putMaster(const QString& uuid)
{
    if (!Uuid::isSafeName(uuid)) {
        return {};
    }
    const QString folder = folderOfMaster(m_connection, uuid);
    const bool exists =
        Sql::firstInteger(m_connection, "SELECT modelId FROM RKMaster WHERE uuid=?", uuid)
            .has_value();
    if (!exists || folder.isEmpty()) {
        // Deleted for good, files and all; or a path that leads out of the package; or a reference
        // without an import group, of which nothing tells where its sidecars lie.
        return {};
    }
    if (Result<void> written = putMasterFile(uuid, folder); !written.ok()) {
        return written;
    }
    const QList<qint64> versions = Sql::integers(
        m_connection, "SELECT modelId FROM RKVersion WHERE masterUuid=? ORDER BY modelId", uuid);
    for (const qint64 version : versions) {
        Result<void> written = VersionSidecar::put(m_connection, version, folder, m_output);
        if (!written.ok()) {
            return written;
        }
    }
    return {};
}

Result<void> SidecarWriter::putMasterFile(const QString& uuid, const QString& folder)
{
    Result<SidecarFile> file =
        SidecarFile::open(folder + u"/Master.apmaster"_s, SidecarFile::Form::Binary);
    if (!file.ok()) {
        return file.error();
    }
    if (m_output.needsContentOf(file.value())) {
        mirrorMaster(file.value().content(), uuid);
    }
    return m_output.put(file.value(), SidecarOutput::Stamp::With);
}

void SidecarWriter::mirrorMaster(QVariantMap& content, const QString& uuid)
{
    {
        Sql::Query row(m_connection, "SELECT * FROM RKMaster WHERE uuid=?", uuid);
        if (row.next()) {
            SidecarValues::mirrorRow(content, row, {u"hasAttachments"_s, u"hasNotes"_s});
        }
    }
    const QString group = Sql::firstText(m_connection,
                                         "SELECT g.name FROM RKMaster m JOIN RKImportGroup g"
                                         " ON g.uuid=m.importGroupUuid WHERE m.uuid=?",
                                         uuid);
    SidecarValues::mirror(content, u"importGroup"_s, group.isNull() ? QVariant() : group);
    content.insert(u"version"_s, qlonglong{SidecarValues::kFormatVersion});
    mirrorNotes(content, m_connection, uuid);
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
    if (all.value(u"albumSubclass"_s).toLongLong() != Schema::kSubclassOfQueries) {
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

Result<void> SidecarWriter::putAlbum(const QString& uuid)
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
        return m_output.remove(path);
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
        mirrorPhotos(file.value().content(), *id);
    }
    return m_output.put(file.value(), SidecarOutput::Stamp::Without);
}

void SidecarWriter::mirrorPhotos(QVariantMap& content, qint64 album)
{
    const QString key = u"versionUuids"_s;
    QStringList uuids = Sql::texts(m_connection,
                                   "SELECT v.uuid FROM RKAlbumVersion a JOIN RKVersion v"
                                   " ON v.modelId=a.versionId WHERE a.albumId=? ORDER BY a.modelId",
                                   album);
    if (LooseRows::losesPhoto(m_connection, album)) {
        SidecarValues::keepLost(
            uuids, content.value(key), m_connection, "SELECT modelId FROM RKVersion WHERE uuid=?");
    }
    SidecarValues::mirrorNames(content, key, uuids);
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

Result<void> SidecarWriter::putFolder(const QString& uuid)
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
        return m_output.remove(path);
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
        content.insert(u"projectVersion"_s, qlonglong{Schema::kProjectVersion});
        content.insert(u"projectCompatibleBackToVersion"_s, qlonglong{Schema::kProjectVersion});
    }
    mirrorCustomOrder(content, uuid);
    mirrorNotes(content, m_connection, uuid);
    return m_output.put(file.value(), SidecarOutput::Stamp::Without);
}

Result<void> SidecarWriter::put(const Changes& changes)
{
    Result<void> outcome;
    const auto note = [&outcome](const Result<void>& done) {
        outcome = outcome.ok() ? done : outcome;
    };
    for (const QString& uuid : changes.masters) {
        note(putMaster(uuid));
    }
    for (const QString& uuid : changes.albums) {
        note(putAlbum(uuid));
    }
    for (const QString& uuid : changes.folders) {
        note(putFolder(uuid));
    }
    if (changes.keywords) {
        note(LibrarySidecars::putKeywords(m_connection, m_output));
    }
    if (changes.adminData || !changes.masters.isEmpty()) {
        note(LibrarySidecars::putDataModel(m_connection, m_output)); // it tells how many there are
    }
    return outcome;
}
