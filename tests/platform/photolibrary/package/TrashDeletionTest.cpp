#include "AlbumRows.h"
#include "EventRows.h"
#include "LibraryFixture.h"
#include "PhotoRows.h"
#include "RowIdIndexes.h"
#include "TrashRows.h"

#include <QDir>
#include <QFile>
#include <QSet>

using namespace Qt::StringLiterals;

class TrashDeletionTest : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        Writer to = writer();
        m_event = EventRows::createEvent(to, u"One"_s);
        m_first = addPhoto(m_event);
        Kind other;
        other.fileName = u"IMG_2.JPG"_s;
        m_second = addPhoto(m_event, other);
        EventRows::updateStatistics(to, m_event);
    }

    void TearDown() override
    {
        expectSoundIndexes();
        LibraryFixture::TearDown();
    }

    TrashRows::Leftovers throwAway(const Photo& photo)
    {
        Writer to = writer();
        TrashRows::moveToTrash(to, {photo.visible});
        return TrashRows::deleteForGood(to, {photo.visible});
    }

    /// How many rows of any table still name one of the photo's versions or its master.
    qint64 rowsOf(const Photo& photo)
    {
        qint64 rows = 0;
        for (const char* sql :
             {"SELECT count(*) FROM RKVersion WHERE modelId IN (?,?)",
              "SELECT count(*) FROM RKAlbumVersion WHERE versionId IN (?,?)",
              "SELECT count(*) FROM RKKeywordForVersion WHERE versionId IN (?,?)",
              "SELECT count(*) FROM RKIptcProperty WHERE versionId IN (?,?)",
              "SELECT count(*) FROM RKOtherProperty WHERE versionId IN (?,?)",
              "SELECT count(*) FROM RKExifStringProperty WHERE versionId IN (?,?)",
              "SELECT count(*) FROM RKExifNumberProperty WHERE versionId IN (?,?)",
              "SELECT count(*) FROM RKImageProxyState WHERE versionId IN (?,?)"}) {
            rows += Sql::firstInteger(connection(), sql, photo.visible, photo.imported).value_or(0);
        }
        for (const char* sql :
             {"SELECT count(*) FROM RKMaster WHERE uuid=? OR alternateMasterUuid=?",
              "SELECT count(*) FROM RKFolder WHERE posterVersionUuid=? OR uuid=?",
              "SELECT count(*) FROM RKAlbum WHERE posterVersionUuid=? OR uuid=?",
              "SELECT count(*) FROM RKImageAdjustment WHERE versionUuid=? OR uuid=?"}) {
            rows +=
                Sql::firstInteger(connection(), sql, photo.master, photo.visibleUuid).value_or(0);
        }
        return rows;
    }

    QString m_event;
    Photo m_first;
    Photo m_second;
};

TEST_F(TrashDeletionTest, everyRowOfAPhotoGoesAndItsNeighbourStays)
{
    Writer to = writer();
    const qint64 album = AlbumRows::createAlbum(to, u"Album"_s);
    AlbumRows::addPhotos(to, album, {m_first.visible, m_second.visible});
    for (const Photo& photo : {m_first, m_second}) {
        PhotoRows::assignKeyword(to, photo.visible, u"Family"_s);
        PhotoRows::setComment(to, photo.visible, u"words"_s);
        PhotoRows::setAltitude(to, photo.visible, 7.0);
        PhotoRows::setName(to, photo.visible, u"name"_s);
    }
    Sql::execute(connection(),
                 "UPDATE RKAlbum SET posterVersionUuid=? WHERE modelId=?",
                 m_first.visibleUuid,
                 album);
    const qint64 neighbour = rowsOf(m_second);
    throwAway(m_first);
    EXPECT_EQ(rowsOf(m_first), 0);
    EXPECT_EQ(rowsOf(m_second), neighbour);
    EXPECT_EQ(number("SELECT versionCount FROM RKAlbum WHERE modelId=?", album), 1);
    EXPECT_FALSE(changes().masters.contains(m_first.master));
}

TEST_F(TrashDeletionTest, aPhotoOutsideTheTrashIsNotDeleted)
{
    Writer to = writer();
    const QStringList before = snapshot();
    const TrashRows::Leftovers nothing =
        TrashRows::deleteForGood(to, {m_first.visible, m_first.imported, 999});
    EXPECT_EQ(snapshot(), before);
    EXPECT_TRUE(nothing.folders.isEmpty());
    EXPECT_TRUE(nothing.files.isEmpty());
    EXPECT_TRUE(nothing.emptyFolders.isEmpty());
}

TEST_F(TrashDeletionTest, itsFilesAreNamedSidecarsFirst)
{
    const QString group = Kind{}.group;
    const TrashRows::Leftovers left = throwAway(m_first);
    EXPECT_EQ(left.files, QStringList{"Masters/"_L1 + group + "/IMG_1.JPG"_L1});
    ASSERT_FALSE(left.folders.isEmpty());
    EXPECT_EQ(left.folders.first(), "Database/Versions/"_L1 + group + '/'_L1 + m_first.master);
    EXPECT_TRUE(left.folders.contains("Previews/"_L1 + group + '/'_L1 + m_first.visibleUuid));
    EXPECT_TRUE(left.folders.contains("Thumbnails/"_L1 + group + '/'_L1 + m_first.visibleUuid));
    EXPECT_TRUE(left.emptyFolders.contains("Masters/"_L1 + group));
    EXPECT_LT(left.emptyFolders.indexOf("Masters/2010/05/01"_L1),
              left.emptyFolders.indexOf("Masters/2010"_L1));
    EXPECT_FALSE(left.emptyFolders.contains("Masters"_L1));
    for (const QString& folder : left.folders) {
        EXPECT_FALSE(folder.contains(m_second.master)) << folder.toStdString();
        EXPECT_FALSE(folder.contains(m_second.visibleUuid)) << folder.toStdString();
    }
}

TEST_F(TrashDeletionTest, aFileIsNamedAsItIsSpelledOnDisk)
{
    const QString folder = package() + "/Masters/"_L1 + Kind{}.group;
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile file(folder + "/img_1.jpg"_L1);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const TrashRows::Leftovers left = throwAway(m_first);
    EXPECT_EQ(left.files, QStringList{"Masters/"_L1 + Kind{}.group + "/img_1.jpg"_L1});
    EXPECT_TRUE(QDir(package() + "/Masters/2010"_L1).removeRecursively());
}

TEST_F(TrashDeletionTest, bothOriginalsOfAPairGo)
{
    const QString raw = addPartner(m_first, u"IMG_1.CR2"_s);
    const TrashRows::Leftovers left = throwAway(m_first);
    EXPECT_EQ(left.files.size(), 2);
    EXPECT_EQ(Sql::firstInteger(connection(), "SELECT count(*) FROM RKMaster WHERE uuid=?", raw),
              0);
    EXPECT_EQ(rowsOf(m_first), 0);
}

TEST_F(TrashDeletionTest, ofOneOfTwoPhotosOfAMasterTheSidecarGoesAndTheMasterStays)
{
    const auto makeSecond = [this](const Photo& photo, int number) {
        Writer to = writer();
        RowIdIndexes::follow(to, "RKVersion", {photo.imported}, [&] {
            Sql::execute(connection(),
                         "UPDATE RKVersion SET showInLibrary=1,versionNumber=? WHERE modelId=?",
                         number,
                         photo.imported);
        });
        TrashRows::moveToTrash(to, {photo.imported});
        return TrashRows::deleteForGood(to, {photo.imported});
    };
    const QString folder = "Database/Versions/"_L1 + Kind{}.group + '/'_L1 + m_second.master;
    const TrashRows::Leftovers left = makeSecond(m_second, 2);
    EXPECT_EQ(left.files, QStringList{folder + "/Version-2.apversion"_L1});
    EXPECT_FALSE(left.folders.contains(folder));
    EXPECT_TRUE(makeSecond(m_first, 1).files.isEmpty()) << "that one tells of the other";
}

TEST_F(TrashDeletionTest, anOriginalOutsideThePackageIsNeverNamed)
{
    Kind referenced;
    referenced.fileName = u"IMG_9.JPG"_s;
    referenced.group = u"Users/me/Pictures"_s;
    referenced.isReference = true;
    const Photo photo = addPhoto(m_event, referenced);
    const TrashRows::Leftovers left = throwAway(photo);
    EXPECT_TRUE(left.files.isEmpty());
    EXPECT_EQ(left.folders.first(), "Database/Versions/"_L1 + Kind{}.group + '/'_L1 + photo.master);
    EXPECT_EQ(rowsOf(photo), 0);
}

TEST_F(TrashDeletionTest, aFileThatAnotherPhotoUsesIsKeptWhateverItsSpelling)
{
    Kind same;
    same.fileName = u"img_1.jpg"_s;
    addPhoto(m_event, same);
    EXPECT_TRUE(throwAway(m_first).files.isEmpty());
}

TEST_F(TrashDeletionTest, pathsThatLeadOutOfThePackageAreNotFollowed)
{
    for (const QString& path : {u"../../IMG.JPG"_s,
                                u"/etc/passwd"_s,
                                u"2010/../../../x/IMG.JPG"_s,
                                u"2010//IMG.JPG"_s,
                                u"IMG.JPG/"_s,
                                u""_s}) {
        Kind kind;
        kind.fileName = u"IMG_7.JPG"_s;
        const Photo photo = addPhoto(m_event, kind);
        Sql::execute(
            connection(), "UPDATE RKMaster SET imagePath=? WHERE uuid=?", path, photo.master);
        Sql::execute(connection(),
                     "UPDATE RKImageProxyState SET fullSizePreviewPath=?2,thumbnailPath=?2,"
                     "miniThumbnailPath=?2 WHERE versionId=?1",
                     photo.visible,
                     "../"_L1 + photo.visibleUuid + "/a.jpg"_L1);
        const TrashRows::Leftovers left = throwAway(photo);
        for (const QString& named : left.folders + left.files + left.emptyFolders) {
            EXPECT_FALSE(named.contains(".."_L1)) << named.toStdString();
            EXPECT_FALSE(named.contains("//"_L1)) << named.toStdString();
            EXPECT_FALSE(named.contains("etc"_L1)) << named.toStdString();
        }
        EXPECT_TRUE(left.files.isEmpty()) << path.toStdString();
    }
}

TEST_F(TrashDeletionTest, aFolderThatIsNotNamedAfterThePhotoIsKept)
{
    Sql::execute(connection(),
                 "UPDATE RKImageProxyState SET fullSizePreviewPath='2010/shared/p.jpg' WHERE "
                 "versionId=?",
                 m_first.visible);
    for (const QString& folder : throwAway(m_first).folders) {
        EXPECT_FALSE(folder.contains("shared"_L1)) << folder.toStdString();
    }
}

TEST_F(TrashDeletionTest, theIdsOfDeletedRowsAreNotGivenOutAgain)
{
    throwAway(m_second);
    Kind kind;
    kind.fileName = u"IMG_3.JPG"_s;
    EXPECT_GT(addPhoto(m_event, kind).visible, m_second.imported);
}

TEST(RealLibraryTrashTest, aLibraryOfTheApplicationStaysSoundUntilItIsEmpty)
{
    RealLibrary library;
    if (!library.isPresent()) {
        return;
    }
    Connection& connection = library.connection();
    connection.beginImmediate();
    Changes changes;
    Writer writer{connection, changes, 800000000};
    const QList<qint64> photos =
        Sql::integers(connection, "SELECT modelId FROM RKVersion WHERE showInLibrary=1");
    const auto count = [&](const char* sql) { return Sql::firstInteger(connection, sql); };
    const char* const shown = "SELECT sum(versionCount) FROM RKFolder WHERE folderType=2";
    const std::optional<qint64> before = count(shown);
    EXPECT_EQ(TrashRows::moveToTrash(writer, photos), before);
    EXPECT_EQ(count(shown), 0);
    EXPECT_EQ(RowIdIndexes::mismatches(connection).join('\n'_L1).toStdString(), "");
    EXPECT_EQ(TrashRows::restore(writer, photos), photos.size());
    EXPECT_EQ(count(shown), photos.size());
    EXPECT_EQ(RowIdIndexes::mismatches(connection).join('\n'_L1).toStdString(), "");
    TrashRows::moveToTrash(writer, photos);
    const TrashRows::Leftovers left = TrashRows::deleteForGood(writer, photos);
    EXPECT_EQ(left.files.size(), photos.size());
    EXPECT_EQ(RowIdIndexes::mismatches(connection).join('\n'_L1).toStdString(), "");
    for (const char* table : {"RKVersion",
                              "RKMaster",
                              "RKAlbumVersion",
                              "RKKeywordForVersion",
                              "RKVersionFaceContent",
                              "RKImageAdjustment",
                              "RKImageProxyState",
                              "RKIptcProperty",
                              "RKOtherProperty",
                              "RKExifStringProperty",
                              "RKExifNumberProperty"}) {
        EXPECT_EQ(count((std::string("SELECT count(*) FROM ") + table).c_str()), 0) << table;
    }
    EXPECT_EQ(count("SELECT count(*) FROM RKFolder WHERE posterVersionUuid IS NOT NULL"), 0);
}
