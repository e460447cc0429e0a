#include "BuiltInRows.h"

#include "AdminData.h"
#include "AlbumQueries.h"
#include "Queries.h"
#include "RowIdIndexes.h"
#include "RowIdSet.h"
#include "Schema.h"
#include "Uuid.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace
{

struct Setting {
    QString area;
    QString name;
    QString value;
    int type;
    bool persists; ///< outlives a rebuild of the databases
};

struct Folder {
    qint64 id;
    QString uuid;
    int type; ///< 1 container, 2 event
    QString name;
    QString path;
    QString album;
    bool isExpanded;
    QString sortKey;
};

struct Album {
    qint64 id;
    QString uuid;
    int subclass; ///< 1 of a folder, 2 query, 3 regular
    QString name;
    QString folder;
    QString sortKey;
    bool isHidden;
    bool isMagic;
    QByteArray query; ///< null for none
};

QString byEventAndDate()
{
    return u"basicProperties.projectDate&exifProperties.ImageDate"_s;
}

QString byDate()
{
    return u"exifProperties.ImageDate"_s;
}

/// With the no-break spaces that the photo application writes.
QString photoStream()
{
    return u"My\u00A0Photo\u00A0Stream"_s;
}

void insertSettings(Writer& writer, const QList<Setting>& settings)
{
    for (const Setting& setting : settings) {
        Sql::execute(writer.connection,
                     "INSERT INTO RKAdminData(propertyArea,propertyName,propertyValue,"
                     "storedDataType,persistAfterRebuild) VALUES(?,?,?,?,?)",
                     setting.area,
                     setting.name,
                     setting.value,
                     setting.type,
                     setting.persists ? 1 : 0);
    }
    writer.changes.adminData = true;
}

void insertIdentity(Writer& writer)
{
    using namespace AdminData;
    const QString database = u"database"_s;
    const QString own = u"database.iPhoto"_s;
    insertSettings(
        writer,
        {{database, u"versionMajor"_s, QString::number(Schema::kMajorVersion), kInteger, false},
         {database, u"versionMinor"_s, QString::number(Schema::kMinorVersion), kInteger, false},
         {database, u"createDate"_s, QString::number(writer.now, 'f', 6), kDate, true},
         {database,
          u"DatabaseCompatibleBackToMinorVersion"_s,
          QString::number(Schema::kOldestMinorVersion),
          kInteger,
          false},
         {database, u"databaseUuid"_s, Uuid::create(), kString, true},
         {database, u"applicationIdentifier"_s, u"com.apple.iPhoto9"_s, kString, true},
         {database, u"isIPhotoLibrary"_s, u"1"_s, kBoolean, true},
         {u"touchedBy"_s, u"com.apple.iPhoto9"_s, u"1"_s, kInteger, true},
         {database, u"RKDatabaseChanged"_s, u"0"_s, kBoolean, false},
         {database, u"automaticallyGenerateFullSizePreviews"_s, u"1"_s, kBoolean, true},
         {database, u"UseEmbeddedJPEGv2"_s, u"1"_s, kBoolean, true},
         {database,
          u"RKXMLExportManagerMode"_s,
          u"RKXMLExportManagerExportAlwaysKey"_s,
          kString,
          true},
         {database, u"previewQuality"_s, u"0.833333333333333"_s, kReal, true},
         {database, u"previewSizeLimit"_s, u"1"_s, kInteger, true},
         {own, u"showLastNMonths"_s, u"1"_s, kBoolean, true},
         {own, u"generatedHiResThumbnails"_s, u"1"_s, kBoolean, true},
         {own, u"lastNMonthsValue"_s, u"12"_s, kInteger, true},
         {u"GeneralPreferences"_s, u"FacesEnabled"_s, u"1"_s, kBoolean, true},
         {u"RKImageProxyState"_s, u"segmentIndexLimit"_s, u"2000"_s, kInteger, false},
         {u"plist"_s, u"historyFileNumber"_s, u"1"_s, kInteger, false},
         {database, u"tmSyncUuid"_s, Uuid::create(), kString, false},
         {database, u"tmSyncCounter"_s, u"1"_s, kInteger, false}});
    // Lists of objects whose sidecars are still to be written: none.
    for (const QString& kind : {u"volume"_s,
                                u"vault"_s,
                                u"folder"_s,
                                u"album"_s,
                                u"master"_s,
                                u"version"_s,
                                u"place"_s,
                                u"detectedFace"_s,
                                u"faceName"_s,
                                u"detectedFaceExternal"_s,
                                u"masterGroup"_s,
                                u"versionGroup"_s}) {
        insertSettings(writer, {{u"plist"_s, kind + "Ids"_L1, QString(), kBlob, false}});
    }
}

void insertFolder(Writer& writer, const Folder& folder)
{
    const bool isEvent = folder.type == 2;
    const QVariant date = isEvent ? QVariant(writer.now) : QVariant();
    Sql::execute(
        writer.connection,
        "INSERT INTO RKFolder(modelId,uuid,folderType,name,parentFolderUuid,implicitAlbumUuid,"
        "automaticallyGenerateFullSizePreviews,versionCount,minImageDate,maxImageDate,folderPath,"
        "createDate,isExpanded,isHidden,isHiddenWhenEmpty,isFavorite,isInTrash,isMagic,"
        "colorLabelIndex,sortAscending,sortKeyPath) "
        "VALUES(?1,?2,?3,?4,?5,?6,?7,0,?8,?8,?9,?10,?11,0,?7,0,0,1,-1,1,?12)",
        folder.id,
        folder.uuid,
        folder.type,
        folder.name,
        folder.id == 1 ? QString() : u"LibraryFolder"_s,
        folder.album,
        isEvent ? 1 : 0,
        date,
        folder.path,
        writer.now,
        folder.isExpanded ? 1 : 0,
        folder.sortKey);
    writer.changes.folders.insert(folder.uuid);
}

void insertAlbum(Writer& writer, const Album& album)
{
    const bool isRegular = album.subclass == 3;
    Sql::execute(
        writer.connection,
        "INSERT INTO RKAlbum(modelId,uuid,albumType,albumSubclass,name,folderUuid,queryFolderUuid,"
        "sortKeyPath,sortAscending,customSortAvailable,versionCount,createDate,isFavorite,"
        "isInTrash,isHidden,isMagic,publishSyncNeeded,colorLabelIndex,recentUserChangeDate,"
        "filterData,queryData) "
        "VALUES(?1,?2,1,?3,?4,?5,?6,?7,1,0,?8,?9,0,0,?10,?11,0,-1,?9,?12,?13)",
        album.id,
        album.uuid,
        album.subclass,
        album.name,
        album.folder,
        album.query.isNull() ? QString() : u"LibraryFolder"_s,
        album.sortKey,
        isRegular ? QVariant(0) : QVariant(),
        writer.now,
        album.isHidden ? 1 : 0,
        album.isMagic ? 1 : 0,
        AlbumQueries::commonFilter(),
        album.query);
    writer.changes.albums.insert(album.uuid);
}

void insertFolders(Writer& writer, const QString& streamAlbum, const QString& topAlbum)
{
    const QString custom = u"custom.default"_s;
    const QString kind = u"custom.kind"_s;
    const QList<Folder> folders{
        {1, u"LibraryFolder"_s, 1, u""_s, u"1/"_s, u"libraryFolderImplicitAlbum"_s, true, custom},
        {2,
         u"AllProjectsItem"_s,
         1,
         u"Projects"_s,
         u"1/2/"_s,
         u"allProjectsAlbum"_s,
         false,
         custom},
        {3, u"RKPhotostreamFolder"_s, 2, photoStream(), u"1/3/"_s, streamAlbum, true, kind},
        {4, u"TrashFolder"_s, 1, u"Trash"_s, u"1/4/"_s, u"trashAlbum"_s, true, kind},
        {5, u"PublishedProjects"_s, 1, u"PublishedProjects"_s, u"1/5/"_s, {}, true, kind},
        {6, u"TopLevelAlbums"_s, 1, u"TopLevelAlbums"_s, u"1/6/"_s, topAlbum, true, custom},
        {7, u"TopLevelSlideshows"_s, 1, u"TopLevelSlideshows"_s, u"1/7/"_s, {}, true, custom}};
    for (const Folder& folder : folders) {
        insertFolder(writer, folder);
    }
}

void insertAlbums(Writer& writer, const QString& streamAlbum, const QString& topAlbum)
{
    using namespace AlbumQueries;
    const QDate today = QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC)
                            .addSecs(static_cast<qint64>(writer.now))
                            .date();
    const QString library = u"LibraryFolder"_s;
    const QByteArray months = lastTwelveMonths(today);
    const QList<Album> albums{
        {1, u"libraryFolderImplicitAlbum"_s, 1, library, library, byDate(), false, false, {}},
        {2,
         u"allProjectsAlbum"_s,
         1,
         u"Events"_s,
         u"AllProjectsItem"_s,
         byEventAndDate(),
         false,
         true,
         everything()},
        {4,
         u"allPhotosAlbum"_s,
         2,
         u"Photos"_s,
         library,
         byEventAndDate(),
         false,
         true,
         everything()},
        {5,
         u"peopleAlbum"_s,
         2,
         u"Faces"_s,
         library,
         u"basicProperties.VersionName"_s,
         false,
         true,
         people()},
        {6, u"allPlacedPhotosAlbum"_s, 2, u"Places"_s, library, byDate(), false, true, places()},
        {7, u"lastNMonthsAlbum"_s, 2, u"Last 12 Months"_s, library, byDate(), false, true, months},
        {8, u"lastImportAlbum"_s, 3, u"Last Import"_s, library, byEventAndDate(), false, false, {}},
        {9, streamAlbum, 1, photoStream(), u"RKPhotostreamFolder"_s, byDate(), false, true, {}},
        {10, u"flaggedAlbum"_s, 2, u"Flagged"_s, library, byDate(), false, true, flagged()},
        {11, u"rotationAlbum"_s, 3, u"Pending Rotation"_s, library, byDate(), true, false, {}},
        {13, u"trashAlbum"_s, 2, u"Trash"_s, u"TrashFolder"_s, byDate(), false, true, trash()},
        {14, u"rejectedAlbum"_s, 2, u"rejectedAlbum"_s, library, byDate(), false, true, rejected()},
        {15, topAlbum, 1, QString(), u"TopLevelAlbums"_s, byDate(), false, false, {}},
        {16,
         u"eventFilterBarAlbum"_s,
         2,
         u""_s,
         library,
         byEventAndDate(),
         true,
         false,
         everything()},
    };
    for (const Album& album : albums) {
        insertAlbum(writer, album);
    }
}

void insertSidebar(Writer& writer)
{
    const auto place = [&](const QString& container, const QStringList& objects) {
        int order = 0;
        for (const QString& object : objects) {
            order += 256;
            Sql::execute(writer.connection,
                         "INSERT INTO RKCustomSortOrder(containerUuid,purpose,objectUuid,"
                         "orderNumber) VALUES(?,'default',?,?)",
                         container,
                         object,
                         order);
        }
    };
    place(u"AllProjectsItem"_s, {u"allProjectsAlbum"_s});
    place(u"LibraryFolder"_s,
          {u"allPhotosAlbum"_s,
           u"peopleAlbum"_s,
           u"allPlacedPhotosAlbum"_s,
           u"lastNMonthsAlbum"_s,
           u"lastImportAlbum"_s,
           u"RKPhotostreamFolder"_s,
           u"flaggedAlbum"_s});
}

void insertKeywords(Writer& writer)
{
    for (const QString& name :
         {u"\u2714"_s, u"Favorite"_s, u"Family"_s, u"Kids"_s, u"Vacation"_s, u"Birthday"_s}) {
        Sql::execute(writer.connection,
                     "INSERT INTO RKKeyword(uuid,name,searchName,hasChildren) VALUES(?,?,?,0)",
                     Uuid::create(),
                     name,
                     name.toLower());
    }
    writer.changes.keywords = true;
}

/// The highest id of a table of this connection; tables of the other databases are still empty.
qint64 highestId(Writer& writer, Schema::Database database, const QString& table)
{
    using enum Schema::Database;
    if (database != Library && database != Properties && database != ImageProxies) {
        return 0;
    }
    const std::string sql = "SELECT max(modelId) FROM " + table.toStdString();
    return Sql::firstInteger(writer.connection, sql.c_str()).value_or(0);
}

bool isCounted(const Schema::Table& table)
{
    return !table.name.endsWith("_RidIndexes"_L1) && !table.name.endsWith("_CharIndex"_L1) &&
           table.name != "RKAdminData"_L1;
}

void insertCounters(Writer& writer)
{
    using enum Schema::Database;
    for (const Schema::Database database : {Library, Properties, ImageProxies, Faces, History}) {
        const QList<Schema::Table> tables = Schema::tables(database);
        for (const Schema::Table& table : tables) {
            if (isCounted(table)) {
                const qint64 next = highestId(writer, database, table.name) + 1;
                AdminData::setText(writer,
                                   table.name,
                                   u"nextModelId"_s,
                                   QString::number(next),
                                   AdminData::kInteger);
            }
        }
    }
}

void insertIdSets(Writer& writer)
{
    for (const char* table : {"RKAlbum", "RKCustomSortOrder", "RKFolder", "RKKeyword"}) {
        const std::string sql = std::string("SELECT modelId FROM ") + table;
        AdminData::setBlob(writer,
                           QString::fromLatin1(table),
                           u"allModelIds"_s,
                           RowIdSet(Sql::integers(writer.connection, sql.c_str())).toBlob());
    }
    for (const QString& table :
         {u"RKAttachment"_s,      u"RKDetectedFace"_s, u"RKDetectedFaceExternal"_s,
          u"RKFaceExternal"_s,    u"RKFaceName"_s,     u"RKImageAdjustment"_s,
          u"RKImageProxyState"_s, u"RKImportGroup"_s,  u"RKMaster"_s,
          u"RKMasterGroup"_s,     u"RKNote"_s,         u"RKPlace"_s,
          u"RKPlaceName"_s,       u"RKRepair"_s,       u"RKSimilarFaces"_s,
          u"RKStackContent"_s,    u"RKStackState"_s,   u"RKVault"_s,
          u"RKVersion"_s,         u"RKVersionGroup"_s, u"RKVolume"_s}) {
        AdminData::setBlob(writer, table, u"allModelIds"_s, RowIdSet().toBlob());
    }
}

} // namespace

void BuiltInRows::insert(Writer& writer)
{
    const QString streamAlbum = Uuid::create();
    const QString topAlbum = Uuid::create();
    insertIdentity(writer);
    insertFolders(writer, streamAlbum, topAlbum);
    insertAlbums(writer, streamAlbum, topAlbum);
    insertSidebar(writer);
    insertKeywords(writer);
    insertCounters(writer);
    insertIdSets(writer);
    // The photo stream has a set of albums below it; it is empty.
    Sql::execute(writer.connection,
                 "INSERT INTO RKFolder_RidIndexes(indexName,value,ridIndex) "
                 "VALUES('manAlbumIdClosure','3',?)",
                 RowIdSet().toBlob());
    RowIdIndexes::recomputeAll(writer);
    // Written last: what has it was closed in good order.
    insertSettings(writer, {{u"database"_s, u"closedClean"_s, u"1"_s, AdminData::kBoolean, false}});
    writer.changes.catalogues = true;
}
