#include "LibraryFixture.h"

#include "LibraryCreator.h"
#include "ModelIds.h"
#include "RowIdIndexes.h"
#include "Uuid.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace
{

/// Making a library flushes many files, so that it is done once.
struct SharedLibrary {
    SharedLibrary()
        : package(folder.path() + "/Test.photolibrary"_L1)
    {
        const Result<void> made = LibraryCreator::create(package);
        problem = made.ok() ? QString() : made.error().message;
    }

    QTemporaryDir folder;
    QString package;
    QString problem;
};

const SharedLibrary& sharedLibrary()
{
    static const SharedLibrary library;
    return library;
}

} // namespace

void LibraryFixture::SetUp()
{
    ASSERT_EQ(sharedLibrary().problem.toStdString(), "");
    auto opened = Connection::open(package(), Connection::Mode::Write);
    ASSERT_TRUE(opened.ok()) << opened.error().message.toStdString();
    m_connection = std::move(opened).value();
    m_connection->beginImmediate();
}

void LibraryFixture::TearDown()
{
    m_connection.reset();
}

QString LibraryFixture::package() const
{
    return sharedLibrary().package;
}

qint64 LibraryFixture::addMaster(const QString& uuid, const QString& event, const Kind& kind)
{
    Writer to = writer();
    const qint64 id = ModelIds::allocate(to, "RKMaster");
    const qint64 group = ModelIds::allocate(to, "RKImportGroup");
    const QString groupUuid = Uuid::create();
    Sql::execute(connection(),
                 "INSERT INTO RKImportGroup(modelId,uuid,importYear,importMonth,importDay,"
                 "importTime) VALUES(?,?,'2010','05','01','120000')",
                 group,
                 groupUuid);
    Sql::execute(connection(),
                 "INSERT INTO RKMaster(modelId,uuid,projectUuid,importGroupUuid,fileName,imagePath,"
                 "fileIsReference,isInTrash,isTrulyRaw) VALUES(?,?,?,?,?,?,?,0,0)",
                 id,
                 uuid,
                 event,
                 groupUuid,
                 kind.fileName,
                 kind.group + '/'_L1 + kind.fileName,
                 kind.isReference ? 1 : 0);
    RowIdIndexes::addRows(to, "RKMaster", {id});
    return id;
}

qint64
LibraryFixture::addVersion(const Photo& photo, qint64 masterId, int versionNumber, const Kind& kind)
{
    Writer to = writer();
    const qint64 id = ModelIds::allocate(to, "RKVersion");
    const bool isVisible = versionNumber == 1;
    Sql::execute(connection(),
                 "INSERT INTO RKVersion(modelId,uuid,name,versionNumber,masterUuid,masterId,"
                 "nonRawMasterUuid,projectUuid,imageTimeZoneName,imageDate,mainRating,isHidden,"
                 "isFlagged,isOriginal,hasNotes,isInTrash,showInLibrary,hasKeywords,"
                 "exportMetadataChangeDate) "
                 "VALUES(?1,?2,'one',?3,?4,?5,?4,?6,'GMT',?7,0,0,0,?8,0,0,?9,0,?10)",
                 id,
                 isVisible ? photo.visibleUuid : Uuid::create(),
                 versionNumber,
                 photo.master,
                 masterId,
                 photo.event,
                 kind.date,
                 isVisible ? 0 : 1,
                 isVisible ? 1 : 0,
                 isVisible ? QVariant(1.0) : QVariant());
    RowIdIndexes::addRows(to, "RKVersion", {id});
    return id;
}

void LibraryFixture::addProxy(const Photo& photo, const Kind& kind)
{
    Writer to = writer();
    const qint64 id = ModelIds::allocate(to, "RKImageProxyState");
    const QString folder = kind.group + '/'_L1 + photo.visibleUuid;
    Sql::execute(connection(),
                 "INSERT INTO RKImageProxyState(modelId,versionUuid,versionId,thumbnailsCurrent,"
                 "thumbnailPath,miniThumbnailPath,fullSizePreviewPath) VALUES(?,?,?,1,?,?,?)",
                 id,
                 photo.visibleUuid,
                 photo.visible,
                 folder + "/a_1024.jpg"_L1,
                 folder + "/a.jpg"_L1,
                 folder + "/p.jpg"_L1);
    RowIdIndexes::addRows(to, "RKImageProxyState", {id});
}

LibraryFixture::Photo LibraryFixture::addPhoto(const QString& event, const Kind& kind)
{
    Photo photo;
    photo.event = event;
    photo.master = Uuid::create();
    photo.visibleUuid = Uuid::create();
    const qint64 masterId = addMaster(photo.master, event, kind);
    photo.visible = addVersion(photo, masterId, 1, kind);
    photo.imported = addVersion(photo, masterId, 0, kind);
    addProxy(photo, kind);
    return photo;
}

LibraryFixture::Photo LibraryFixture::addPhoto(const QString& event)
{
    return addPhoto(event, Kind{});
}

QString LibraryFixture::addPartner(const Photo& photo, const QString& fileName)
{
    Kind kind;
    kind.fileName = fileName;
    Photo partner = photo;
    partner.master = Uuid::create();
    const qint64 id = addMaster(partner.master, photo.event, kind);
    addVersion(partner, id, 0, kind);
    const char* const pair = "UPDATE RKMaster SET alternateMasterUuid=? WHERE uuid=?";
    Sql::execute(connection(), pair, partner.master, photo.master);
    Sql::execute(connection(), pair, photo.master, partner.master);
    Sql::execute(connection(),
                 "UPDATE RKVersion SET rawMasterUuid=? WHERE modelId=?",
                 partner.master,
                 photo.visible);
    return partner.master;
}

namespace
{

/// The columns of a row but those that every change sets to the present.
QString textOf(SQLite::Statement& row)
{
    QString text;
    for (int i = 0; i < row.getColumnCount(); ++i) {
        const std::string name = row.getColumn(i).getName();
        if (name != "exportMetadataChangeDate" && name != "recentUserChangeDate") {
            text += '|'_L1 + Sql::text(row.getColumn(i));
        }
    }
    return text;
}

} // namespace

QStringList LibraryFixture::snapshot()
{
    QStringList lines;
    for (const char* sql :
         {"SELECT * FROM RKVersion",
          "SELECT * FROM RKMaster",
          "SELECT * FROM RKFolder",
          "SELECT * FROM RKAlbumVersion",
          "SELECT * FROM RKKeywordForVersion",
          "SELECT modelId,uuid,versionCount,isInTrash FROM RKAlbum",
          "SELECT versionId,propertyKey,stringId FROM RKIptcProperty",
          "SELECT versionId,propertyKey,stringId,numberProperty FROM RKOtherProperty",
          "SELECT versionId,propertyKey,numberProperty FROM RKExifNumberProperty",
          "SELECT indexName,value,hex(ridIndex) FROM RKVersion_RidIndexes ORDER BY 1,2",
          "SELECT indexName,value,hex(ridIndex) FROM RKMaster_RidIndexes ORDER BY 1,2",
          "SELECT indexName,value,hex(ridIndex) FROM RKAlbum_RidIndexes ORDER BY 1,2",
          "SELECT indexName,value,hex(ridIndex) FROM RKAlbumVersion_RidIndexes ORDER BY 1,2",
          "SELECT indexName,value,hex(ridIndex) FROM RKFolder_RidIndexes ORDER BY 1,2"}) {
        SQLite::Statement rows(connection().database(), sql);
        while (rows.executeStep()) {
            lines.append(QString::fromLatin1(sql) + textOf(rows));
        }
    }
    return lines;
}

qint64 LibraryFixture::number(const char* sql, qint64 id)
{
    return Sql::firstInteger(connection(), sql, id).value_or(-1);
}

void LibraryFixture::expectSoundIndexes()
{
    EXPECT_EQ(RowIdIndexes::mismatches(connection()).join('\n'_L1).toStdString(), "");
}

RealLibrary::RealLibrary()
{
    const QString folder =
        QStringLiteral(CORVANE_SHARED_DATA) + "/Test-iPhoto-9.6.1.photolibrary/Database/apdb/"_L1;
    const QStringList names{u"Library.apdb"_s, u"Properties.apdb"_s, u"ImageProxies.apdb"_s};
    if (!QDir().mkpath(package() + "/Database/apdb"_L1)) {
        return;
    }
    for (const QString& name : names) {
        const QString copy = package() + "/Database/apdb/"_L1 + name;
        if (!QFile::copy(folder + name, copy) ||
            !QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner)) {
            return;
        }
    }
    auto opened = Connection::open(package(), Connection::Mode::Write);
    if (opened.ok()) {
        m_connection = std::move(opened).value();
    }
}

QString RealLibrary::package() const
{
    return m_folder.path() + "/Real.photolibrary"_L1;
}
