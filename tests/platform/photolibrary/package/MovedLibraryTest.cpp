#include "FlushRecorder.h"
#include "WritableLibrary.h"

#include <QDir>
#include <QFileInfo>

#include <filesystem>

using namespace Qt::StringLiterals;

/// A package that is moved in the file manager while the program has it open.
class MovedLibrary : public WritableLibrary
{
protected:
    [[nodiscard]] QString elsewhere() const { return folder() + "/Moved.photolibrary"_L1; }

    void move() const { ASSERT_TRUE(QDir().rename(package(), elsewhere())); }

    void moveBack() const { ASSERT_TRUE(QDir().rename(elsewhere(), package())); }

    void expectNothingAtTheOldPath() const { EXPECT_FALSE(QFileInfo::exists(package())); }
};

TEST_F(MovedLibrary, noTurnBeginsThereAndTheReasonIsTold)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const QString picture = makePicture(u"IMG_1.JPG"_s);
    move();
    try {
        const auto turn = library->beginPhotoTurn();
        import(*library, picture);
        turn->commit();
        ADD_FAILURE() << "the turn was committed";
    } catch (const ScriptingException& exception) {
        EXPECT_TRUE(QString::fromUtf8(exception.what()).contains(u"was moved"_s))
            << exception.what();
    }
    EXPECT_TRUE(library->close().ok()) << "nothing had to follow";
    expectNothingAtTheOldPath();
}

TEST_F(MovedLibrary, aTurnThatWasBegunBeforeIsUndoneWhereTheLibraryIsNow)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    {
        const auto turn = library->beginPhotoTurn();
        import(*library, makePicture(u"IMG_1.JPG"_s));
        move();
        EXPECT_THROW(turn->commit(), ScriptingException);
    }
    expectNothingAtTheOldPath();
    EXPECT_TRUE(library->close().ok());
    expectNothingAtTheOldPath();
    moveBack();
    EXPECT_EQ(rows(u"RKMaster"_s), 0);
    // The journal knows the file that the turn had made; the next opening removes it.
    ASSERT_NE(open(Access::Write), nullptr);
    EXPECT_EQ(pictureFiles(), QStringList());
    expectSound();
}

TEST_F(MovedLibrary, sidecarsAndCataloguesMakeNoSecondLibraryAtTheOldPath)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    {
        const auto turn = library->beginPhotoTurn();
        import(*library, makePicture(u"IMG_1.JPG"_s));
        turn->commit();
    }
    move();
    const Result<void> closed = library->close();
    EXPECT_EQ(closed.error().code, ErrorCode::NotFound);
    EXPECT_TRUE(closed.error().message.contains(package()));
    expectNothingAtTheOldPath();
    moveBack();
    EXPECT_EQ(rows(u"RKMaster"_s), 1);
}

TEST_F(MovedLibrary, anotherLibraryAtTheOldPathIsNotWrittenTo)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    {
        const auto turn = library->beginPhotoTurn();
        import(*library, makePicture(u"IMG_1.JPG"_s));
        turn->commit();
    }
    move();
    ASSERT_TRUE(QDir().mkpath(package() + "/Masters"_L1));
    EXPECT_FALSE(library->close().ok());
    EXPECT_EQ(QDir(package()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{u"Masters"_s});
}

TEST_F(MovedLibrary, anotherLibraryAtTheOldPathLosesNothingWhenTheTrashIsEmptied)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    import(*library, makePicture(u"IMG_1.JPG"_s));
    lastImported(*library)->removeFrom(application(*library)->photoLibraryAlbum());
    const QStringList files = pictureFiles();
    ASSERT_EQ(files.size(), 3);
    const QDir apdb(QFileInfo(package()).canonicalFilePath() + u"/Database/apdb"_s);
    FlushRecorder recorder;
    // The commit's last flush is the moment: then a copy, say from a disk, lies at the path.
    recorder.failWhere([&, committing = false](const QString& path) mutable {
        if (path != apdb.path()) {
            return false;
        }
        const bool wasCommitting = committing;
        committing = !apdb.entryList({u"*-mj*"_s}, QDir::Files).isEmpty();
        if (wasCommitting && !committing) {
            move();
            std::filesystem::copy(elsewhere().toStdString(),
                                  package().toStdString(),
                                  std::filesystem::copy_options::recursive);
        }
        return false;
    });
    const Result<EmptiedTrash> emptied = library->emptyTrash();
    ASSERT_FALSE(emptied.ok());
    EXPECT_EQ(emptied.error().code, ErrorCode::NotFound);
    EXPECT_TRUE(emptied.error().message.contains(files.first() + u": the library was moved"_s))
        << emptied.error().message.toStdString();
    EXPECT_EQ(pictureFiles(), files);
    EXPECT_FALSE(library->close().ok());
}
