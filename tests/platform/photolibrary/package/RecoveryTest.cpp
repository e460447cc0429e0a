#include "ChildProcess.h"
#include "OrdinaryUser.h"
#include "WritableLibrary.h"

#include <QFile>

#include <unistd.h>

#include <functional>

using namespace Qt::StringLiterals;

/// What is found after a writer that ended in the middle, without a destructor or a flush.
class RecoveryAfterCrash : public WritableLibrary
{
protected:
    using Work = std::function<void(PhotoLibrary&)>;

    /// Opens the library for writing in a process of its own, lets it work and ends it at once.
    void crashAfter(const Work& work) const
    {
        ChildProcess child([&](ChildProcess&) {
            auto library = PhotoLibrary::open(package(), {Access::Write, false});
            if (library.ok()) {
                work(*library.value()); // it ends the process itself
            }
        });
        ASSERT_TRUE(child.crashed()) << "the child failed";
    }

    /// Opening for writing recovers; then gives the library up again.
    void recover() const
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        const Result<void> closed = library->close();
        EXPECT_TRUE(closed.ok()) << closed.error().message.toStdString();
    }

    [[nodiscard]] QByteArray catalogue() const
    {
        QFile file(package() + u"/AlbumData.xml"_s);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

TEST_F(RecoveryAfterCrash, filesOfATurnThatWasNotCommittedAreRemoved)
{
    const QString picture = makePicture(u"IMG_1.JPG"_s);
    crashAfter([&](PhotoLibrary& library) {
        const auto turn = library.beginPhotoTurn();
        import(library, picture);
        ::_exit(0);
    });
    ASSERT_FALSE(pictureFiles().isEmpty()) << "the crash left nothing to recover from";
    recover();
    EXPECT_EQ(pictureFiles(), QStringList());
    EXPECT_TRUE(versionSidecars().isEmpty());
    EXPECT_EQ(rows(u"RKMaster"_s), 0);
    EXPECT_EQ(rows(u"RKVersion"_s), 0);
    expectSound();
}

TEST_F(RecoveryAfterCrash, aCommittedTurnIsThereWithSidecarsAndCatalogue)
{
    const QString picture = makePicture(u"IMG_1.JPG"_s);
    crashAfter([&](PhotoLibrary& library) {
        const auto turn = library.beginPhotoTurn();
        import(library, picture);
        turn->commit();
        ::_exit(0);
    });
    const QStringList files = pictureFiles();
    ASSERT_FALSE(files.isEmpty());
    ASSERT_TRUE(versionSidecars().isEmpty()) << "nothing lags";
    ASSERT_FALSE(catalogue().contains("IMG_1.JPG")) << "nothing lags";

    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    EXPECT_FALSE(versionSidecars().isEmpty());
    EXPECT_TRUE(catalogue().contains("IMG_1.JPG"));
    EXPECT_EQ(pictureFiles(), files);
    const Result<QList<PhotoFacts>> photos = library->photos();
    ASSERT_TRUE(photos.ok());
    ASSERT_EQ(photos.value().size(), 1);
    EXPECT_FALSE(photos.value().first().missing);
    EXPECT_TRUE(library->close().ok());
    expectSound();
}

TEST_F(RecoveryAfterCrash, onlyTheUncommittedOneOfTwoTurnsIsUndone)
{
    const QString first = makePicture(u"FIRST.JPG"_s);
    const QString second = makePicture(u"SECOND.JPG"_s);
    crashAfter([&](PhotoLibrary& library) {
        {
            const auto turn = library.beginPhotoTurn();
            import(library, first);
            turn->commit();
        }
        const auto turn = library.beginPhotoTurn();
        import(library, second);
        ::_exit(0);
    });
    ASSERT_FALSE(pictureFiles().filter(u"SECOND"_s).isEmpty());
    recover();
    EXPECT_FALSE(pictureFiles().filter(u"FIRST"_s).isEmpty());
    EXPECT_TRUE(pictureFiles().filter(u"SECOND"_s).isEmpty());
    EXPECT_EQ(rows(u"RKMaster"_s), 1);
    EXPECT_TRUE(catalogue().contains("FIRST.JPG"));
    EXPECT_FALSE(catalogue().contains("SECOND.JPG"));
    expectSound();
}

TEST_F(RecoveryAfterCrash, filesThatNoTurnMadeStay)
{
    const QString picture = makePicture(u"IMG_1.JPG"_s);
    crashAfter([&](PhotoLibrary& library) {
        const auto turn = library.beginPhotoTurn();
        import(library, picture);
        ::_exit(0);
    });
    const QStringList masters = pictureFiles().filter(u"Masters/"_s);
    ASSERT_EQ(masters.size(), 1);
    const QString folder = masters.first().section(u'/', 0, -2);
    const QStringList strays{u"Masters/stray.JPG"_s, folder + u"/neighbour.JPG"_s};
    for (const QString& stray : strays) {
        ASSERT_TRUE(QFile::copy(picture, package() + u'/' + stray));
    }
    const QString unfinished = folder + u"/.IMG_1.JPG.aBcDeF.corvane-new"_s;
    ASSERT_TRUE(QFile::copy(picture, package() + u'/' + unfinished));
    recover();
    QStringList left = pictureFiles();
    for (const QString& stray : strays) {
        EXPECT_TRUE(left.removeOne(stray)) << stray.toStdString();
    }
    EXPECT_EQ(left, QStringList()) << "what the turn made or was making";
}

TEST_F(RecoveryAfterCrash, aRecoveredLibraryTakesTheSamePictureAgain)
{
    const QString picture = makePicture(u"IMG_1.JPG"_s);
    crashAfter([&](PhotoLibrary& library) {
        const auto turn = library.beginPhotoTurn();
        import(library, picture);
        ::_exit(0);
    });
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        const auto turn = library->beginPhotoTurn();
        import(*library, picture);
        turn->commit();
        EXPECT_TRUE(library->close().ok());
    }
    const QStringList files = pictureFiles();
    EXPECT_EQ(files.filter(u"Masters/"_s).size(), 1);
    recover();
    EXPECT_EQ(pictureFiles(), files) << "a later opening removed files of a committed turn";
    EXPECT_EQ(rows(u"RKMaster"_s), 1);
    expectSound();
}

TEST_F(RecoveryAfterCrash, filesThatCannotBeRemovedAreNotForgotten)
{
    const OrdinaryUser user({folder()});
    const QString picture = makePicture(u"IMG_1.JPG"_s);
    crashAfter([&](PhotoLibrary& library) {
        const auto turn = library.beginPhotoTurn();
        import(library, picture);
        ::_exit(0);
    });
    const QStringList masters = pictureFiles().filter(u"Masters/"_s);
    ASSERT_EQ(masters.size(), 1);
    {
        const WithPermissions closed(package() + u'/' + masters.first().section(u'/', 0, -2), 0555);
        recover();
        EXPECT_EQ(pictureFiles(), masters);
        recover();
    }
    recover();
    EXPECT_EQ(pictureFiles(), QStringList());
    expectSound();
}
