#include "WritableLibrary.h"
#include "WriteAccess.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QThread>

#include <sys/stat.h>

#include <atomic>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

/// All tables that an import writes to.
const QStringList kTables{u"RKMaster"_s,
                          u"RKVersion"_s,
                          u"RKFolder"_s,
                          u"RKAlbum"_s,
                          u"RKImportGroup"_s,
                          u"RKKeyword"_s,
                          u"RKKeywordForVersion"_s,
                          u"prop.RKIptcProperty"_s,
                          u"prox.RKImageProxyState"_s};

} // namespace

class PhotoLibraryTurn : public WritableLibrary
{
protected:
    /// What the scan does to a copy within its turn.
    static void importAndDescribe(PhotoLibrary& library, const QString& path)
    {
        import(library, path);
        const PhotoPtr copy = lastImported(library);
        ASSERT_NE(copy, nullptr);
        copy->setComment(u"Grüße vom Meer"_s);
        copy->setRating(4);
        copy->select();
        application(library)->assignKeywordString(u"Processed RAW"_s);
    }

    [[nodiscard]] QStringList counts() const
    {
        QStringList all;
        for (const QString& table : kTables) {
            all << table + u' ' + QString::number(rows(table));
        }
        return all;
    }
};

TEST_F(PhotoLibraryTurn, aCommittedTurnLeavesTheCopyWithAllThatWasSaidOfIt)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const auto turn = library->beginPhotoTurn();
    importAndDescribe(*library, makePicture(u"IMG_1.JPG"_s));
    EXPECT_EQ(rows(u"RKMaster"_s), 0) << "seen by others before the commit";
    turn->commit();
    const Result<void> closed = library->close();
    ASSERT_TRUE(closed.ok()) << closed.error().message.toStdString();

    const auto again = open(Access::Read);
    ASSERT_NE(again, nullptr);
    const Result<QList<PhotoFacts>> photos = again->photos();
    ASSERT_TRUE(photos.ok());
    ASSERT_EQ(photos.value().size(), 1);
    const PhotoFacts& copy = photos.value().first();
    EXPECT_EQ(copy.fileName, u"IMG_1.JPG"_s);
    EXPECT_EQ(copy.comment, u"Grüße vom Meer"_s);
    EXPECT_EQ(copy.rating, 4);
    EXPECT_EQ(copy.keywords, QStringList{u"Processed RAW"_s});
    EXPECT_FALSE(copy.missing);
    EXPECT_FALSE(versionSidecars().isEmpty());
    expectSound();
}

TEST_F(PhotoLibraryTurn, aDroppedTurnLeavesNoRowAndNoFile)
{
    const QStringList before = counts();
    const QStringList filesBefore = pictureFiles();
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    {
        const auto turn = library->beginPhotoTurn();
        importAndDescribe(*library, makePicture(u"IMG_1.JPG"_s));
        EXPECT_GT(pictureFiles().size(), filesBefore.size());
    }
    EXPECT_EQ(pictureFiles(), filesBefore);
    EXPECT_TRUE(library->close().ok());
    EXPECT_EQ(counts(), before);
    EXPECT_EQ(pictureFiles(), filesBefore);
    EXPECT_TRUE(versionSidecars().isEmpty());
    expectSound();
}

TEST_F(PhotoLibraryTurn, aTurnAfterADroppedOneCommitsOnlyItsOwn)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    {
        const auto dropped = library->beginPhotoTurn();
        importAndDescribe(*library, makePicture(u"IMG_1.JPG"_s));
    }
    const auto turn = library->beginPhotoTurn();
    import(*library, makePicture(u"IMG_2.JPG"_s));
    turn->commit();
    EXPECT_TRUE(library->close().ok());
    EXPECT_EQ(rows(u"RKMaster"_s), 1);
    EXPECT_EQ(pictureFiles().filter(u"IMG_1"_s), QStringList());
    expectSound();
}

TEST_F(PhotoLibraryTurn, turnsOfTwoThreadsBothCommitIntoOneEventOfTheDay)
{
    const QStringList pictures{makePicture(u"IMG_1.JPG"_s), makePicture(u"IMG_2.JPG"_s)};
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const QDate dayBefore = QDate::currentDate();
    std::atomic_int committed{0};
    std::vector<std::unique_ptr<QThread>> threads;
    for (const QString& picture : pictures) {
        threads.emplace_back(QThread::create([&library, &committed, picture] {
            try {
                const auto turn = library->beginPhotoTurn();
                importAndDescribe(*library, picture);
                turn->commit();
                ++committed;
            } catch (const ScriptingException& exception) {
                ADD_FAILURE() << exception.what();
            }
        }));
    }
    for (const auto& thread : threads) {
        thread->start();
    }
    for (const auto& thread : threads) {
        EXPECT_TRUE(thread->wait());
    }
    EXPECT_EQ(committed, 2);
    const Result<QList<PhotoFacts>> photos = library->photos();
    ASSERT_TRUE(photos.ok());
    ASSERT_EQ(photos.value().size(), 2);
    EXPECT_EQ(photos.value().first().rollId, photos.value().last().rollId);
    EXPECT_NE(photos.value().first().rollId, 0);
    // Midnight may pass during the test.
    const QStringList names{u"Corvane "_s + dayBefore.toString(Qt::ISODate),
                            u"Corvane "_s + QDate::currentDate().toString(Qt::ISODate)};
    EXPECT_TRUE(names.contains(photos.value().first().rollName))
        << photos.value().first().rollName.toStdString();
    EXPECT_TRUE(library->close().ok());
    expectSound();
}

TEST_F(PhotoLibraryTurn, catalogueAndSidecarsAreWrittenOnceAfterAllTurns)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const auto catalogue = [this] {
        struct stat status = {}; // a file that is written anew is another one
        const QString path = package() + "/AlbumData.xml"_L1;
        return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_ino : 0;
    };
    const auto before = catalogue();
    const QStringList sidecars = versionSidecars();
    for (const QString& name : {u"IMG_1.JPG"_s, u"IMG_2.JPG"_s, u"IMG_3.JPG"_s}) {
        const auto turn = library->beginPhotoTurn();
        importAndDescribe(*library, makePicture(name));
        turn->commit();
        EXPECT_EQ(catalogue(), before);
    }
    EXPECT_EQ(versionSidecars(), sidecars);
    ASSERT_TRUE(library->synchronise().ok());
    const auto after = catalogue();
    EXPECT_NE(after, before);
    // A master and two versions each.
    EXPECT_EQ(versionSidecars().size(), sidecars.size() + qsizetype{3} * 3);
    ASSERT_TRUE(library->synchronise().ok());
    EXPECT_EQ(catalogue(), after);
}

TEST_F(PhotoLibraryTurn, theTrashIsNotEmptiedInTheMidstOfOne)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    import(*library, makePicture(u"IMG_1.JPG"_s));
    const QStringList files = pictureFiles();
    lastImported(*library)->removeFrom(application(*library)->photoLibraryAlbum());
    {
        const auto turn = library->beginPhotoTurn();
        import(*library, makePicture(u"IMG_2.JPG"_s));
        const Result<EmptiedTrash> emptied = library->emptyTrash();
        ASSERT_FALSE(emptied.ok());
        EXPECT_EQ(emptied.error().code, ErrorCode::Internal);
    }
    EXPECT_EQ(pictureFiles(), files);
    EXPECT_EQ(library->trashedPhotos().value().size(), 1);
}

TEST_F(PhotoLibraryTurn, aFileThatWasThereBeforeIsNoneOfIts)
{
    const QString file = u"Masters/IMG_1.JPG"_s;
    ASSERT_TRUE(QDir().mkpath(package() + u"/Masters"_s) && QDir(folder()).mkpath(u"turns"_s));
    ASSERT_TRUE(QFile::copy(makePicture(u"IMG_1.JPG"_s), package() + u'/' + file));
    const auto connection = Connection::open(package(), Connection::Mode::Write);
    const auto access = WriteAccess::open(
        {package(), folder() + u"/turns"_s, folder() + u"/copies"_s}, nullptr, {});
    ASSERT_TRUE(connection.ok() && access.ok());
    {
        const auto transaction = access.value()->begin(*connection.value());
        ASSERT_TRUE(transaction.ok());
        EXPECT_FALSE(transaction.value()->announceFiles({u"Masters/new.JPG"_s, file}).ok());
    }
    EXPECT_TRUE(QFile::exists(package() + u'/' + file));
}
