#include "LooseRows.h"

#include "LibraryBuilder.h"
#include "PhotoLibrary.h"
#include "PropertyList.h"
#include "QtPrinters.h"
#include "Queries.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

/// A library of two photos, the first of them in an album, to which rows are added that lead to
/// what is gone.
class LooseRowsOfALibrary : public testing::Test
{
protected:
    void SetUp() override
    {
        m_photo = m_builder.addPhoto(u"A.JPG"_s, u"Trip"_s);
        m_gone = m_builder.addPhoto(u"B.JPG"_s, u"Trip"_s);
        m_album = m_builder.addAlbum(u"Best"_s, {m_photo});
        deletePhotoForGood(); // whose ids were given out, then
        ASSERT_TRUE(repair().ok()) << "sidecars and catalogues follow";
        ASSERT_EQ(findings(), QStringList());
    }

    [[nodiscard]] Result<std::unique_ptr<PhotoLibrary>> open(OpenOptions options) const
    {
        options.access = Access::Write;
        return PhotoLibrary::open(m_builder.package(), options);
    }

    [[nodiscard]] Result<RepairReport> repair() const
    {
        auto library = open({.forRepair = true});
        return library.ok() ? library.value()->repair() : Result<RepairReport>(library.error());
    }

    /// What verify() tells, with " *" behind what can be mended.
    [[nodiscard]] QStringList findings() const
    {
        QStringList lines;
        const auto library = PhotoLibrary::open(m_builder.package(), {});
        const Result<QList<Finding>> found = library.value()->verify();
        EXPECT_TRUE(found.ok());
        for (const Finding& finding : found.value()) {
            lines += finding.what + (finding.repairable ? u" *"_s : QString());
        }
        return lines;
    }

    void execute(const QString& sql)
    {
        m_builder.edit(
            [&sql](Writer& writer) { writer.connection.database().exec(sql.toStdString()); });
    }

    [[nodiscard]] qint64 count(const char* sql) const
    {
        const auto connection = Connection::open(m_builder.package(), Connection::Mode::Read);
        return Sql::firstInteger(*connection.value(), sql).value_or(-1);
    }

    [[nodiscard]] QString textOf(const QString& sql) const
    {
        const auto connection = Connection::open(m_builder.package(), Connection::Mode::Read);
        return Sql::firstText(*connection.value(), sql.toStdString().c_str());
    }

    [[nodiscard]] QString uuidOf(qint64 photo) const
    {
        return textOf(u"SELECT uuid FROM RKVersion WHERE modelId=%1"_s.arg(photo));
    }

    /// The uuids that the sidecar of the album of that name tells, sorted.
    [[nodiscard]] QStringList photosInSidecarOf(const QString& album) const
    {
        const QString uuid = textOf(u"SELECT uuid FROM RKAlbum WHERE name='%1'"_s.arg(album));
        const Result<QVariant> read =
            PropertyList::read(m_builder.package() + u"/Database/Albums/"_s + uuid + u".apalbum"_s);
        EXPECT_TRUE(read.ok());
        QStringList photos = read.ok()
                                 ? read.value().toMap().value(u"versionUuids"_s).toStringList()
                                 : QStringList();
        photos.sort();
        return photos;
    }

    /// One row of each kind for the photo that is gone.
    void leaveTies()
    {
        execute(
            u"INSERT INTO RKAlbumVersion(modelId,versionId,albumId) VALUES(900,%1,%2);"
            "INSERT INTO RKKeywordForVersion(modelId,versionId,keywordId) VALUES(900,%1,1);"
            "INSERT INTO RKImageProxyState(modelId,versionId,versionUuid) VALUES(900,%1,'none');"
            "INSERT INTO RKIptcProperty(modelId,versionId,propertyKey,stringId)"
            " VALUES(900,%1,'ObjectName',1);"
            "INSERT INTO RKOtherProperty(modelId,versionId,propertyKey) VALUES(900,%1,'Flagged');"
            "INSERT INTO RKExifStringProperty(modelId,versionId,propertyKey)"
            " VALUES(900,%1,'Make');"
            "INSERT INTO RKExifNumberProperty(modelId,versionId,propertyKey)"
            " VALUES(900,%1,'Altitude');"
            "UPDATE RKAdminData SET propertyValue='901' WHERE propertyName='nextModelId' AND"
            " propertyArea IN ('RKAlbumVersion','RKKeywordForVersion','RKImageProxyState',"
            "'RKIptcProperty','RKOtherProperty','RKExifStringProperty','RKExifNumberProperty')"_s
                .arg(m_gone)
                .arg(m_album));
    }

    QTemporaryDir m_folder;
    LibraryBuilder m_builder{m_folder.filePath(u"Test.photolibrary"_s)};
    qint64 m_photo{0};
    qint64 m_gone{0};
    qint64 m_album{0};

private:
    void deletePhotoForGood()
    {
        m_builder.moveToTrash(m_gone);
        const auto library = open({});
        ASSERT_TRUE(library.ok() && library.value()->emptyTrash().ok());
    }
};

TEST_F(LooseRowsOfALibrary, tiesToAPhotoThatIsGoneAreToldAndKeepNoOtherFromBeingWritten)
{
    leaveTies();
    const QStringList before = findings();
    for (const QString& table : {u"album entry(ies) name"_s,
                                 u"assigned keyword(s) name"_s,
                                 u"record(s) of pictures belong"_s,
                                 u"1 text(s) belong"_s,
                                 u"1 other text(s) belong"_s,
                                 u"camera text(s) belong"_s,
                                 u"number(s) belong"_s}) {
        EXPECT_EQ(before.filter(table).size(), 1) << table.toStdString();
    }
    for (const QString& finding : before) {
        EXPECT_TRUE(finding.endsWith("*"_L1)) << finding.toStdString();
    }
    const qint64 added = m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s);
    EXPECT_GT(added, m_gone);
    const auto library = open({});
    ASSERT_TRUE(library.ok()) << library.error().message.toStdString();
    EXPECT_TRUE(library.value()->summary().value().writable);
    EXPECT_EQ(library.value()->summary().value().problems.size(), 7);
}

TEST_F(LooseRowsOfALibrary, aRepairDeletesTheTiesAndNothingElse)
{
    leaveTies();
    const Result<RepairReport> report = repair();
    ASSERT_TRUE(report.ok()) << report.error().message.toStdString();
    EXPECT_EQ(report.value().left, QList<Finding>());
    EXPECT_EQ(findings(), QStringList());
    EXPECT_EQ(count("SELECT count(*) FROM RKAlbumVersion WHERE modelId=900"), 0);
    EXPECT_EQ(count("SELECT versionId FROM RKAlbumVersion v JOIN RKAlbum a ON"
                    " a.modelId=v.albumId WHERE a.name='Best'"),
              m_photo);
    EXPECT_EQ(count("SELECT versionCount FROM RKAlbum WHERE name='Best'"), 1);
}

TEST_F(LooseRowsOfALibrary, anAlbumMayCountEntriesOfPhotosThatAreGoneOrNot)
{
    leaveTies();
    for (const int entries : {1, 2}) {
        m_builder.set(u"RKAlbum"_s, m_album, u"versionCount=%1"_s.arg(entries));
        EXPECT_TRUE(open({}).ok()) << entries;
    }
    m_builder.set(u"RKAlbum"_s, m_album, u"versionCount=3"_s);
    EXPECT_EQ(open({}).error().code, ErrorCode::Damaged);
}

TEST_F(LooseRowsOfALibrary, whatNamesAnAlbumThatIsGoneIsATieToo)
{
    execute(u"INSERT INTO RKAlbumVersion(modelId,versionId,albumId) VALUES(900,%1,1);"
            "DELETE FROM RKAlbum WHERE modelId=1"_s.arg(m_photo));
    EXPECT_TRUE(open({}).ok());
    ASSERT_TRUE(repair().ok());
    EXPECT_EQ(count("SELECT count(*) FROM RKAlbumVersion WHERE albumId=1"), 0);
}

TEST_F(LooseRowsOfALibrary, aKeywordThatIsLostWhileItsPhotoIsThereIsToldAndStays)
{
    execute(u"INSERT INTO RKKeywordForVersion(modelId,versionId,keywordId) VALUES(900,%1,1);"
            "UPDATE RKVersion SET hasKeywords=1 WHERE modelId=%1;"
            "UPDATE RKAdminData SET propertyValue='901' WHERE propertyName='nextModelId' AND"
            " propertyArea='RKKeywordForVersion';"
            "DELETE FROM RKKeyword WHERE modelId=1"_s.arg(m_photo));
    EXPECT_TRUE(open({}).ok());
    ASSERT_TRUE(repair().ok());
    EXPECT_TRUE(
        findings().contains(u"1 assigned keyword(s) of photos are not there, the first is 900."_s));
    EXPECT_EQ(count("SELECT count(*) FROM RKKeywordForVersion WHERE modelId=900"), 1);
}

TEST_F(LooseRowsOfALibrary, aRecordOfPicturesWithAWrongNumberIsMendedByItsUuid)
{
    execute(
        u"UPDATE RKImageProxyState SET versionId=%1 WHERE versionId=%2"_s.arg(m_gone).arg(m_photo));
    EXPECT_EQ(open({}).error().code, ErrorCode::Damaged);
    EXPECT_EQ(findings().filter(u"name their photos by a wrong id"_s).filter(u"*"_s).size(), 1);
    EXPECT_EQ(findings().filter(u"belong to no photo"_s), QStringList());
    ASSERT_TRUE(repair().ok());
    EXPECT_EQ(count("SELECT versionId FROM RKImageProxyState"), m_photo);
    EXPECT_EQ(findings(), QStringList());
}

TEST_F(LooseRowsOfALibrary, whereThePhotoOfAMasterIsLostNothingIsATie)
{
    const qint64 kept = m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s);
    execute(u"DELETE FROM RKVersion WHERE modelId=%1"_s.arg(m_photo));
    ASSERT_TRUE(repair().ok());
    EXPECT_EQ(findings().filter(u"1 master(s) have no photo"_s).size(), 1);
    EXPECT_EQ(count("SELECT count(*) FROM RKAlbumVersion v JOIN RKAlbum a ON a.modelId=v.albumId"
                    " WHERE a.name='Best'"),
              1);
    EXPECT_EQ(findings().filter(u"album entry(ies) name"_s).size(), 1);
    EXPECT_EQ(findings().filter(u"album entry(ies) name"_s).filter(u"*"_s), QStringList());
    EXPECT_EQ(count("SELECT max(modelId) FROM RKVersion WHERE showInLibrary=1"), kept);
}

TEST_F(LooseRowsOfALibrary, theSidecarOfAnAlbumStillTellsAPhotoThatIsLost)
{
    const qint64 other = m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s);
    const qint64 album = m_builder.addAlbum(u"More"_s, {m_photo, other});
    ASSERT_TRUE(repair().ok()) << "it makes the sidecar";
    const QStringList both = photosInSidecarOf(u"More"_s);
    const QString lost = uuidOf(m_photo);
    ASSERT_EQ(both.size(), 2);
    execute(u"DELETE FROM RKVersion WHERE modelId=%1"_s.arg(m_photo));
    ASSERT_TRUE(repair().ok());
    EXPECT_EQ(photosInSidecarOf(u"More"_s), both);
    EXPECT_EQ(photosInSidecarOf(u"Best"_s), QStringList{lost});
    execute(
        u"DELETE FROM RKAlbumVersion WHERE albumId=%1 AND versionId=%2"_s.arg(album).arg(other));
    ASSERT_TRUE(repair().ok());
    EXPECT_EQ(photosInSidecarOf(u"More"_s), QStringList{lost})
        << "the other one is there and no longer in the album";
}

TEST_F(LooseRowsOfALibrary, aMasterWhosePhotoIsLostKeepsNoOtherFromBeingWrittenAndLosesNothing)
{
    const QString original = m_builder.package() + "/Masters/"_L1 + m_builder.imagePath(m_photo);
    for (const char* lost : {"DELETE FROM RKVersion WHERE versionNumber=1 AND masterUuid=(%1)",
                             "DELETE FROM RKVersion WHERE masterUuid=(%1)"}) {
        execute(
            QString::fromLatin1(lost).arg(u"SELECT uuid FROM RKMaster WHERE fileName='A.JPG'"_s));
        ASSERT_TRUE(repair().ok()) << "counts and indexes follow";
        const auto library = open({});
        ASSERT_TRUE(library.ok()) << library.error().message.toStdString();
        ASSERT_TRUE(library.value()->close().ok());
        const qint64 other = m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s);
        m_builder.moveToTrash(other);
        ASSERT_TRUE(open({}).value()->emptyTrash().ok());
        EXPECT_TRUE(QFile::exists(original));
        EXPECT_EQ(findings().filter(u"1 master(s) have no photo"_s).size(), 1);
    }
    EXPECT_EQ(findings().filter(u"1 master(s) have no version"_s).size(), 1);
}

TEST_F(LooseRowsOfALibrary, aMasterThatLacksTheVersionAsImportedAloneContradictsItself)
{
    execute(u"DELETE FROM RKVersion WHERE versionNumber=0"_s);
    ASSERT_TRUE(repair().ok());
    const auto refused = open({});
    ASSERT_FALSE(refused.ok());
    EXPECT_TRUE(refused.error().message.contains("have no original version"_L1))
        << refused.error().message.toStdString();
}

TEST_F(LooseRowsOfALibrary, bothMastersOfAPairAreShownByTheirPhoto)
{
    const qint64 pair = m_builder.addPair(u"P"_s, u"Trip"_s, LibraryBuilder::Active::Jpeg);
    EXPECT_TRUE(open({}).ok());
    m_builder.set(u"RKVersion"_s, pair, u"rawMasterUuid=NULL, nonRawMasterUuid=NULL"_s);
    EXPECT_EQ(findings().filter(u"have no photo"_s), QStringList());
}

TEST_F(LooseRowsOfALibrary, theOtherMasterOfAPairNeedsNoVersionOfItsOwn)
{
    using enum LibraryBuilder::Active;
    for (const auto active : {Raw, Jpeg}) {
        const QString name = active == Raw ? u"P"_s : u"Q"_s;
        const qint64 pair = m_builder.addPair(name, u"Trip"_s, active);
        execute(u"DELETE FROM RKVersion WHERE isOriginal=1 AND masterUuid<>(SELECT masterUuid"
                " FROM RKVersion WHERE modelId=%1) AND masterUuid IN (SELECT uuid FROM RKMaster"
                " WHERE fileName LIKE '%2.%')"_s.arg(QString::number(pair), name));
        ASSERT_TRUE(repair().ok());
        EXPECT_EQ(findings().filter(u"master"_s), QStringList()) << name.toStdString();
        EXPECT_TRUE(open({}).ok()) << name.toStdString();
        m_builder.set(u"RKVersion"_s, pair, u"rawMasterUuid=NULL, nonRawMasterUuid=NULL"_s);
        EXPECT_EQ(findings().filter(u"have no version"_s), QStringList()) << name.toStdString();
    }
}

TEST_F(LooseRowsOfALibrary, aVersionThatIsNotShownIsNoLostPhoto)
{
    const qint64 hidden = m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s);
    m_builder.set(u"RKVersion"_s, hidden, u"showInLibrary=0"_s);
    EXPECT_EQ(findings().filter(u"have no photo"_s), QStringList());
}

TEST_F(LooseRowsOfALibrary, aVersionWithoutAMasterOrAnEventIsToldAndStays)
{
    const qint64 other = m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s);
    const qint64 third = m_builder.addPhoto(u"D.JPG"_s, u"Trip"_s);
    m_builder.set(u"RKVersion"_s, other, u"masterUuid='gone'"_s);
    m_builder.set(u"RKVersion"_s, third, u"projectUuid='gone'"_s);
    execute(u"UPDATE RKFolder SET versionCount=(SELECT count(*) FROM RKVersion v WHERE"
            " v.projectUuid=RKFolder.uuid AND v.showInLibrary=1 AND v.isInTrash=0)"
            " WHERE folderType=2 AND isMagic=0"_s);
    execute(u"DELETE FROM RKImportGroup WHERE uuid=(SELECT importGroupUuid FROM RKMaster WHERE"
            " fileName='A.JPG')"_s);
    static_cast<void>(m_builder.addPhoto(u"E.JPG"_s, u"Other"_s));
    ASSERT_TRUE(repair().ok());
    EXPECT_EQ(findings().filter(u"have no master, the first is %1."_s.arg(other)).size(), 1);
    EXPECT_EQ(findings().filter(u"belong to no event, the first is %1."_s.arg(third)).size(), 1);
    EXPECT_EQ(findings().filter(u"1 master(s) have no import group"_s).size(), 1);
    EXPECT_EQ(findings().filter(u"*"_s), QStringList());
    EXPECT_EQ(count("SELECT count(*) FROM RKVersion WHERE masterUuid='gone'"), 1);
}

TEST_F(LooseRowsOfALibrary, whatNamesAnIdThatIsYetToBeGivenOutStopsWritingUntilItIsMended)
{
    execute(u"INSERT INTO RKAlbumVersion(modelId,versionId,albumId) VALUES(1,700,%1);"
            "UPDATE RKAlbum SET versionCount=2 WHERE modelId=%1"_s.arg(m_album));
    const auto refused = open({});
    ASSERT_FALSE(refused.ok()) << "the photo of that id would come into the album";
    EXPECT_EQ(refused.error().code, ErrorCode::Damaged);
    EXPECT_TRUE(refused.error().message.contains(u"though the id 700 is in use"_s))
        << refused.error().message.toStdString();
    ASSERT_TRUE(repair().ok());
    EXPECT_EQ(findings(), QStringList());
    EXPECT_GT(m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s), 700) << "the id was given out once";
}

TEST_F(LooseRowsOfALibrary, withoutACounterNoIdIsGivenOutThatARowStillNames)
{
    execute(u"INSERT INTO RKAlbumVersion(modelId,versionId,albumId) VALUES(1,700,%1);"
            "UPDATE RKAlbum SET versionCount=2 WHERE modelId=%1;"
            "DELETE FROM RKAdminData WHERE propertyArea='RKVersion' AND"
            " propertyName='nextModelId'"_s.arg(m_album));
    EXPECT_EQ(open({}).error().code, ErrorCode::Damaged);
    ASSERT_TRUE(repair().ok());
    EXPECT_GT(m_builder.addPhoto(u"C.JPG"_s, u"Trip"_s), 700);
}

TEST_F(LooseRowsOfALibrary, rowsOfEveryKindTellWhichIdsWereGivenOut)
{
    for (const QString& row :
         {u"RKPlaceForVersion(modelId,versionId) VALUES(1,700)"_s,
          u"RKVersionFaceContent(modelId,versionId) VALUES(1,800)"_s,
          u"RKGroupsForVersions(modelId,versionId) VALUES(1,900)"_s,
          u"RKStatistic(modelId,versionId) VALUES(1,1000)"_s,
          u"RKKeyword(modelId,uuid,name,parentId) VALUES(40,'k','k',1100)"_s}) {
        execute("INSERT INTO "_L1 + row);
        EXPECT_EQ(findings().filter(u"The id counter of"_s).size(), 1) << row.toStdString();
        ASSERT_TRUE(repair().ok());
        EXPECT_EQ(findings().filter(u"The id counter of"_s), QStringList()) << row.toStdString();
    }
}

TEST_F(LooseRowsOfALibrary, ofALibraryThatWasNotClosedTheyAreAReasonToRefuse)
{
    leaveTies();
    execute(u"UPDATE RKAdminData SET propertyValue='0' WHERE propertyName='closedClean'"_s);
    const auto refused = open({.afterCrash = true});
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().code, ErrorCode::Damaged);
    {
        const auto library = open({.afterCrash = true, .forRepair = true});
        ASSERT_TRUE(library.ok() && library.value()->repair().ok()) << "as the refusal advises";
    }
    EXPECT_TRUE(open({.afterCrash = true}).ok());
}

TEST_F(LooseRowsOfALibrary, aTextThatIsLostWhileItsPhotoIsThereIsNoTie)
{
    execute(u"INSERT INTO RKIptcProperty(modelId,versionId,propertyKey,stringId)"
            " VALUES(900,%1,'Caption/Abstract',899)"_s.arg(m_photo));
    EXPECT_EQ(open({}).error().code, ErrorCode::Damaged);
    ASSERT_TRUE(repair().ok());
    EXPECT_EQ(findings().filter(u"name a string that is not there"_s).size(), 1);
    EXPECT_EQ(count("SELECT count(*) FROM RKIptcProperty WHERE modelId=900"), 1);
}
