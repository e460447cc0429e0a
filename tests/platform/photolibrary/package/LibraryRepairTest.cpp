#include "LibraryRepair.h"

#include "ChildProcess.h"
#include "DamagedLibrary.h"
#include "PropertyList.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

class LibraryRepairTest : public DamagedLibrary
{
protected:
    void SetUp() override
    {
        DamagedLibrary::SetUp();
        m_sound.emplace(state());
    }

    /// That the damage done is told in these words, can be mended, and is mended, so that all is as
    /// it was before.
    void expectMended(const QString& words) const
    {
        const QStringList found = findings();
        EXPECT_TRUE(found.join(u'\n').contains(words)) << found.join(u'\n').toStdString();
        for (const QString& finding : found) {
            EXPECT_TRUE(finding.endsWith(" *"_L1)) << finding.toStdString();
        }
        const RepairReport report = repair();
        EXPECT_EQ(report.mended.size(), found.size());
        EXPECT_EQ(report.left.size(), 0);
        EXPECT_EQ(report.failures, QStringList());
        EXPECT_TRUE(QFileInfo::exists(report.backup + u"/Database/apdb/Library.apdb"_s));
        EXPECT_EQ(findings(), QStringList());
        EXPECT_EQ(m_sound->differenceTo(state()).toStdString(), "");
    }

    std::optional<PackageState> m_sound;
};

TEST_F(LibraryRepairTest, aSoundLibraryIsLeftAsItIsAndNotBackedUp)
{
    const RepairReport report = repair();
    EXPECT_TRUE(report.mended.isEmpty() && report.left.isEmpty());
    EXPECT_TRUE(report.backup.isNull());
    EXPECT_EQ(m_sound->differenceTo(state()).toStdString(), "");
}

TEST_F(LibraryRepairTest, missingAndDamagedSidecarsOfPhotosAreMadeAnew)
{
    const QString master = fileIn(u"Database/Versions"_s, u"Master.apmaster"_s);
    remove(master);
    expectMended(u"This sidecar is missing. ["_s + master + u"] *"_s);
    const QString version = fileIn(u"Database/Versions"_s, u"Version-1.apversion"_s);
    write(version, "no property list");
    expectMended(u"This sidecar is damaged. ["_s + version + u"] *"_s);
}

TEST_F(LibraryRepairTest, staleSidecarsFollowTheDatabases)
{
    const QString version = fileIn(u"Database/Versions"_s, u"Version-1.apversion"_s);
    setKey(version, u"mainRating"_s, qlonglong{3});
    expectMended(u"This sidecar tells otherwise than the databases: mainRating. ["_s + version +
                 u"] *"_s);
    const QString uuid = ask(u"SELECT uuid FROM RKAlbum WHERE name='Best'"_s);
    setKey(u"Database/Albums/"_s + uuid + u".apalbum"_s, u"versionUuids"_s, QVariantList());
    expectMended(u"This sidecar tells otherwise than the databases: versionUuids."_s);
    remove(u"Database/Folders/TopLevelAlbums.apfolder"_s);
    expectMended(u"This sidecar is missing. [Database/Folders/TopLevelAlbums.apfolder] *"_s);
}

TEST_F(LibraryRepairTest, theListsOfTheLibraryAsAWholeFollowTheDatabases)
{
    remove(u"Database/Keywords.plist"_s);
    expectMended(u"This sidecar is missing. [Database/Keywords.plist] *"_s);
    replace(u"Database/DataModelVersion.plist"_s, "<integer>3</integer>", "<integer>7</integer>");
    expectMended(u"This sidecar tells otherwise than the databases: masterCount. "
                 "[Database/DataModelVersion.plist] *"_s);
}

TEST_F(LibraryRepairTest, cataloguesFollowTheDatabases)
{
    replace(u"AlbumData.xml"_s, "<string>Tower</string>", "<string>Bridge</string>");
    expectMended(u"AlbumData.xml tells otherwise of photo 3 than the databases: Caption."_s);
    replace(u"AlbumData.xml"_s, "<string>Best</string>", "<string>Worst</string>");
    expectMended(u"AlbumData.xml tells otherwise of the album “Best” than the databases: "
                 "AlbumName."_s);
    replace(u"iLifeShared/AlbumData2.xml"_s, "<string>1,3</string>", "<string>1</string>");
    expectMended(u"AlbumData2.xml tells otherwise of the album “Best” than the databases: the list "
                 "of its photos."_s);
    write(u"iLifeShared/AlbumData2.xml"_s, "<plist>");
    expectMended(u"The brief catalogue AlbumData2.xml is damaged."_s);
    remove(u"iLifeShared/AlbumData2.xml"_s);
    expectMended(u"The brief catalogue AlbumData2.xml is missing."_s);
    remove(u"AlbumData.xml"_s);
    expectMended(u"The catalogue AlbumData.xml is missing."_s);
}

TEST_F(LibraryRepairTest, indexesAreMadeRight)
{
    execute(u"DELETE FROM RKVersion_RidIndexes WHERE indexName='isInTrash' AND value='1'"_s);
    expectMended(u"In RKVersion_RidIndexes the set of rows whose isInTrash is \"1\" is missing."_s);
    execute(u"UPDATE RKMaster_RidIndexes SET ridIndex=x'FF' WHERE indexName='subtype'"_s);
    expectMended(u"In RKMaster_RidIndexes the set of rows whose subtype is \"JPGST\" cannot be "
                 "read."_s);
    execute(u"UPDATE RKVersion_RidIndexes SET ridIndex=(SELECT ridIndex FROM RKVersion_RidIndexes"
            " WHERE indexName='isOriginal' AND value='0') WHERE indexName='isFlagged'"_s);
    expectMended(u"In RKVersion_RidIndexes the set of rows whose isFlagged is \"0\" lacks rows."_s);
}

TEST_F(LibraryRepairTest, countersAndSetsOfIdsAreMadeRight)
{
    execute(u"UPDATE RKAdminData SET propertyValue='2' WHERE propertyArea='RKMaster'"
            " AND propertyName='nextModelId'"_s);
    expectMended(u"The id counter of RKMaster stands at 2, though the id 4 is in use."_s);
    execute(u"UPDATE RKAdminData SET propertyValue='1' WHERE propertyArea='RKUniqueString'"
            " AND propertyName='nextModelId'"_s);
    expectMended(u"The id counter of RKUniqueString stands at 1, though"_s);
    execute(u"UPDATE RKAdminData SET blobPropertyValue=x'010000' WHERE propertyArea='RKVersion'"
            " AND propertyName='allModelIds'"_s);
    expectMended(u"The set of all ids of RKVersion lacks some that are in use"_s);
}

TEST_F(LibraryRepairTest, statisticsOfEventsAndAlbumsAreMadeRight)
{
    execute(u"UPDATE RKAlbum SET versionCount=9 WHERE name='Best'"_s);
    expectMended(u"1 album(s) miscount their photos, the first is \"Best\"."_s);
    execute(u"UPDATE RKFolder SET versionCount=9 WHERE name='Home'"_s);
    expectMended(u"1 event(s) miscount their photos, the first is \"Home\"."_s);
    execute(u"UPDATE RKFolder SET maxImageDate=maxImageDate+5000 WHERE name='Holiday'"_s);
    expectMended(u"The event “Holiday” has a wrong first or last date."_s);
    execute(u"UPDATE RKFolder SET posterVersionUuid=(SELECT uuid FROM RKVersion WHERE"
            " isInTrash=1 AND showInLibrary=1) WHERE name='Holiday'"_s);
    expectMended(u"The event “Holiday” has a key photo that is none of its photos."_s);
    execute(u"UPDATE RKFolder SET isInTrash=1 WHERE name='Home'"_s);
    execute(u"UPDATE RKAlbum SET isInTrash=1 WHERE name='Home'"_s);
    expectMended(u"The event “Home” is in the trash with photos that are not."_s);
}

TEST_F(LibraryRepairTest, whatVersionsRepeatOfOtherRowsIsMadeRight)
{
    execute(u"UPDATE RKVersion SET hasKeywords=0 WHERE modelId=1"_s);
    expectMended(u"1 photo version(s) are wrong about having keywords, the first is 1."_s);
    execute(u"UPDATE RKVersion SET masterId=2 WHERE modelId=1"_s);
    expectMended(u"1 photo version(s) name their masters by a wrong id, the first is 1."_s);
}

TEST_F(LibraryRepairTest, missingThumbnailsAreMadeFromWhatThePhotoShows)
{
    remove(u"Thumbnails/"_s +
           ask(u"SELECT thumbnailPath FROM RKImageProxyState WHERE versionId=1"_s));
    remove(u"Thumbnails/"_s +
           ask(u"SELECT miniThumbnailPath FROM RKImageProxyState WHERE versionId=1"_s));
    expectMended(u"The small thumbnail of the photo 1 (“Lake.jpg”) is missing."_s);
}

TEST_F(LibraryRepairTest, aMissingPreviewOfATurnedPictureIsMadeBeforeTheThumbnails)
{
    remove(u"Previews/"_s +
           ask(u"SELECT fullSizePreviewPath FROM RKImageProxyState WHERE versionId=3"_s));
    expectMended(u"The preview of the photo 3 (“Tower.jpg”) is missing."_s);
}

TEST_F(LibraryRepairTest, manyDamagesAtOnceAreMendedAtOnce)
{
    remove(fileIn(u"Database/Versions"_s, u"Master.apmaster"_s));
    remove(u"iLifeShared/AlbumData2.xml"_s);
    execute(u"DELETE FROM RKVersion_RidIndexes"_s);
    execute(u"UPDATE RKFolder SET versionCount=9"_s);
    execute(u"UPDATE RKFolder SET versionCount=0 WHERE folderType<>2"_s);
    remove(u"Thumbnails/"_s +
           ask(u"SELECT thumbnailPath FROM RKImageProxyState WHERE versionId=3"_s));
    const RepairReport report = repair();
    EXPECT_TRUE(report.left.isEmpty());
    EXPECT_EQ(findings(), QStringList());
}

TEST_F(LibraryRepairTest, whatNeedsAChoiceIsToldAndLeft)
{
    const QString original = u"Masters/"_s + ask(u"SELECT imagePath FROM RKMaster"_s);
    remove(original);
    write(u"Masters/2001/Unknown.jpg"_s, "somebody's only copy");
    write(u"Previews/2001/unknown/Unknown.jpg"_s, "a picture");
    write(u"Database/Albums/unknown.apalbum"_s, "a sidecar");
    execute(u"UPDATE RKMaster SET fileSize=1 WHERE modelId=3"_s);
    execute(u"UPDATE RKMaster SET isInTrash=0"_s);
    remove(u"iLifeShared/AlbumData2.xml"_s);
    const RepairReport report = repair();
    EXPECT_TRUE(QFileInfo::exists(package() + u"/iLifeShared/AlbumData2.xml"_s));
    const QString left = findings().join(u'\n');
    for (const QString& words :
         {u"The original “Lake.jpg” is missing. ["_s + original + u"]"_s,
          u"A file belongs to no photo of the library. [Masters/2001/Unknown.jpg]"_s,
          u"A folder holds files that belong to no photo of the library. "
          "[Previews/2001/unknown]"_s,
          u"A sidecar belongs to no album or folder of the library. "
          "[Database/Albums/unknown.apalbum]"_s,
          u" bytes, but 1 in the database."_s,
          u"contradict their masters about being in the trash"_s}) {
        EXPECT_TRUE(left.contains(words)) << words.toStdString() << "\n" << left.toStdString();
    }
    EXPECT_FALSE(left.contains("*"_L1)) << left.toStdString();
    EXPECT_TRUE(QFileInfo::exists(package() + u"/Masters/2001/Unknown.jpg"_s));
    EXPECT_TRUE(QFileInfo::exists(package() + u"/Previews/2001/unknown/Unknown.jpg"_s));
    EXPECT_TRUE(QFileInfo::exists(package() + u"/Database/Albums/unknown.apalbum"_s));
}

TEST_F(LibraryRepairTest, aDamagedCatalogueIsToldWithTheRemedyAndLeft)
{
    write(u"AlbumData.xml"_s, "faces, cut sh");
    const PackageState before = state();
    const RepairReport report = repair();
    ASSERT_EQ(report.left.size(), 1);
    EXPECT_TRUE(report.left.first().what.contains("remove it to have a new one made"_L1));
    EXPECT_EQ(before.differenceTo(state()).toStdString(), "");
}

TEST_F(LibraryRepairTest, aThumbnailWhosePictureIsDamagedIsLeftAndSaid)
{
    const QString original =
        u"Masters/"_s + ask(u"SELECT imagePath FROM RKMaster WHERE fileName='Garden.jpg'"_s);
    write(original, "no picture");
    execute(u"UPDATE RKMaster SET fileSize=10 WHERE fileName='Garden.jpg'"_s);
    remove(u"Thumbnails/"_s +
           ask(u"SELECT thumbnailPath FROM RKImageProxyState p JOIN RKVersion v ON"
               " v.modelId=p.versionId WHERE v.fileName='Garden.jpg'"_s));
    const RepairReport report = repair();
    ASSERT_EQ(report.failures.size(), 1);
    EXPECT_TRUE(report.failures.first().startsWith("Thumbnails/"_L1));
    EXPECT_EQ(report.left.size(), 1);
}

TEST_F(LibraryRepairTest, aLibraryThatIPhotoDidNotCloseIsRepairedOnlyWhenToldSo)
{
    execute(u"UPDATE RKAdminData SET propertyValue='0' WHERE propertyName='closedClean'"_s);
    execute(u"DELETE FROM RKMaster_RidIndexes"_s);
    const auto refused =
        PhotoLibrary::open(package(), {.access = Access::Write, .forRepair = true});
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().code, ErrorCode::NotClosed);
    auto library = PhotoLibrary::open(
        package(), {.access = Access::Write, .afterCrash = true, .forRepair = true});
    ASSERT_TRUE(library.ok()) << library.error().message.toStdString();
    const Result<RepairReport> report = library.value()->repair();
    ASSERT_TRUE(report.ok());
    EXPECT_TRUE(report.value().left.isEmpty());
}

TEST_F(LibraryRepairTest, whatWasUnfinishedOfAPictureWhenItWasCutOffIsRemoved)
{
    const QString picture = fileIn(u"Thumbnails"_s, u"_1024.jpg"_s);
    const QString folder = picture.section(u'/', 0, -2);
    remove(picture);
    ChildProcess child([this](ChildProcess&) {
        static_cast<void>(open(Access::Write)->repair({}, [](const CareProgress& progress) {
            if (progress.stage == CareProgress::Stage::Pictures) {
                ChildProcess::crash();
            }
        }));
    });
    ASSERT_TRUE(child.crashed());
    const QString ours = folder + "/."_L1 + picture.section(u'/', -1) + ".0abc123.corvane-new"_L1;
    const QString other = folder + "/.picture.jpg.0abc123.corvane-new"_L1;
    write(ours, "half");
    write(other, "of another program");
    EXPECT_EQ(findings().filter(u"left unfinished"_s).size(), 2) << "both are told";
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_FALSE(QFileInfo::exists(package() + u'/' + ours));
    EXPECT_TRUE(QFileInfo::exists(package() + u'/' + other));
}

TEST_F(LibraryRepairTest, aRequestToStopEndsVerificationAndRepair)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    remove(u"iLifeShared/AlbumData2.xml"_s);
    EXPECT_EQ(library->verify([] { return true; }).error().code, ErrorCode::Interrupted);
    EXPECT_EQ(library->repair([] { return true; }).error().code, ErrorCode::Interrupted);
    EXPECT_FALSE(QFileInfo::exists(package() + u"/iLifeShared/AlbumData2.xml"_s));
}

TEST_F(LibraryRepairTest, aRepairThatIsStoppedTellsWhatItMendedAndWhereTheBackupIs)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const QString catalogue = u"iLifeShared/AlbumData2.xml"_s;
    const QString thumbnail = fileIn(u"Thumbnails"_s, u"_1024.jpg"_s);
    remove(catalogue);
    remove(thumbnail);
    bool isMending = false;
    const Result<RepairReport> report =
        library->repair([&isMending] { return isMending; },
                        [&isMending](const CareProgress& progress) {
                            isMending = isMending || progress.stage == CareProgress::Stage::Mending;
                        });
    ASSERT_TRUE(report.ok()) << report.error().message.toStdString();
    EXPECT_TRUE(report.value().stopped);
    EXPECT_TRUE(QFileInfo::exists(report.value().backup + u"/Database"_s));
    ASSERT_EQ(report.value().mended.size(), 1);
    EXPECT_EQ(report.value().mended.first().where, catalogue);
    EXPECT_TRUE(QFileInfo::exists(package() + u'/' + catalogue));
    ASSERT_EQ(report.value().left.size(), 1);
    EXPECT_EQ(report.value().left.first().where, thumbnail);
    EXPECT_FALSE(QFileInfo::exists(package() + u'/' + thumbnail));
}

TEST_F(LibraryRepairTest, aSidecarThatStaysForItsWordsIsNotToldAsMendedByARepairThatWasStopped)
{
    const QString sidecar = fileIn(u"Database/Versions"_s, u"Version-1.apversion"_s);
    setKey(sidecar, u"mainRating"_s, qlonglong{3});
    execute(u"INSERT INTO RKIptcProperty(modelId,versionId,propertyKey,stringId)"
            " SELECT 900+modelId,modelId,'Caption/Abstract',899 FROM RKVersion"_s);
    const auto library =
        PhotoLibrary::open(package(), {.access = Access::Write, .forRepair = true});
    ASSERT_TRUE(library.ok());
    bool isMending = false;
    const Result<RepairReport> report =
        library.value()->repair([&isMending] { return isMending; },
                                [&isMending](const CareProgress& progress) {
                                    isMending =
                                        isMending || progress.stage == CareProgress::Stage::Mending;
                                });
    ASSERT_TRUE(report.ok() && report.value().stopped);
    const auto isOfIt = [&sidecar](const Finding& finding) { return finding.where == sidecar; };
    EXPECT_TRUE(std::ranges::any_of(report.value().left, isOfIt));
    EXPECT_TRUE(std::ranges::none_of(report.value().mended, isOfIt));
    EXPECT_FALSE(report.value().mended.isEmpty()) << "the id counter was";
}

TEST_F(LibraryRepairTest, anErrorAfterTheBackupIsToldWithWhatWasMendedAndWhereTheBackupIs)
{
    execute(u"DELETE FROM RKMaster_RidIndexes"_s);
    remove(u"AlbumData.xml"_s);
    const auto library =
        PhotoLibrary::open(package(), {.access = Access::Write, .forRepair = true});
    ASSERT_TRUE(library.ok());
    const QString inTheWay = package() + u"/iLifeShared/AlbumData2.xml"_s;
    const Result<RepairReport> report =
        library.value()->repair({}, [&inTheWay](const CareProgress& progress) {
            if (progress.stage == CareProgress::Stage::Mending) {
                ASSERT_TRUE(QFile::remove(inTheWay) && QDir().mkdir(inTheWay));
            }
        });
    ASSERT_TRUE(report.ok()) << report.error().message.toStdString();
    EXPECT_TRUE(report.value().stopped);
    ASSERT_EQ(report.value().failures.size(), 1);
    EXPECT_TRUE(report.value().failures.first().contains(inTheWay));
    EXPECT_TRUE(QFileInfo::exists(report.value().backup + u"/Database"_s));
    ASSERT_FALSE(report.value().mended.isEmpty());
    for (const Finding& finding : report.value().mended) {
        EXPECT_EQ(finding.where, u"Database/apdb/Library.apdb"_s);
    }
    ASSERT_EQ(report.value().left.size(), 1);
    EXPECT_EQ(report.value().left.first().where, u"AlbumData.xml"_s);
}

TEST_F(LibraryRepairTest, eachStageOfARepairIsTold)
{
    using enum CareProgress::Stage;
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    remove(u"iLifeShared/AlbumData2.xml"_s);
    QList<CareProgress::Stage> stages;
    qint64 sidecars = 0;
    const Result<RepairReport> report = library->repair({}, [&](const CareProgress& progress) {
        if (stages.isEmpty() || stages.last() != progress.stage) {
            stages.append(progress.stage);
        }
        if (progress.stage == Sidecars && progress.total > 0) {
            EXPECT_EQ(progress.total, 4) << "one a master";
            sidecars = progress.done;
        }
    });
    ASSERT_TRUE(report.ok());
    const QList<CareProgress::Stage> look{Databases, Sidecars, Catalogues, Files};
    EXPECT_EQ(stages, look + QList<CareProgress::Stage>({Backup, Mending}) + look);
    EXPECT_EQ(sidecars, 4);
}

TEST_F(LibraryRepairTest, aKeywordThatTheDatabasesHaveLostStaysInTheSidecars)
{
    execute(u"DELETE FROM RKKeyword WHERE name='Water'"_s);
    const auto told = [](const QStringList& files, const QString& package) {
        return std::ranges::count_if(files, [&package](const QString& file) {
            const Result<QVariant> read = PropertyList::read(package + u'/' + file);
            return read.ok() && PropertyList::toXml(read.value()).value().contains("Water");
        });
    };
    const QStringList files = versionSidecars() + QStringList{u"Database/Keywords.plist"_s};
    ASSERT_EQ(told(files, package()), 2);
    EXPECT_FALSE(repair().left.isEmpty());
    EXPECT_EQ(told(files, package()), 2);
}
