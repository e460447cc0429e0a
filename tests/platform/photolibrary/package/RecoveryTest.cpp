#include "ChildProcess.h"
#include "OrdinaryUser.h"
#include "WritableLibrary.h"

#include <QDir>
#include <QDirIterator>
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

/// A person who goes back to databases of an earlier day by copying them into the package.
class RecoveryAfterGoingBack : public RecoveryAfterCrash
{
protected:
    void SetUp() override
    {
        RecoveryAfterCrash::SetUp();
        qputenv("XDG_STATE_HOME", QFile::encodeName(folder() + u"/state"_s));
        copyDatabases(apdb(), earlier());
    }

    void TearDown() override { qunsetenv("XDG_STATE_HOME"); }

    void crashAfterACommit() const
    {
        const QString picture = makePicture(u"IMG_1.JPG"_s);
        crashAfter([&](PhotoLibrary& library) {
            const auto turn = library.beginPhotoTurn();
            import(library, picture);
            turn->commit();
            ::_exit(0);
        });
    }

    void goBack() const { copyDatabases(earlier(), apdb()); }

    void damageCatalogue() const
    {
        QFile file(package() + u"/AlbumData.xml"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write("torn"), 4);
    }

    [[nodiscard]] QList<QByteArray> journal() const
    {
        QFile file(journalPath());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().split('\n');
    }

    /// As if the process had ended before it could note that its commit succeeded.
    void forgetThatItWasCommitted() const
    {
        QByteArray kept;
        for (const QByteArray& line : journal()) {
            if (!line.isEmpty() && !line.contains("\"committed\"")) {
                kept += line + '\n';
            }
        }
        ASSERT_TRUE(kept.contains("\"made\""));
        QFile file(journalPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(kept), kept.size());
    }

private:
    [[nodiscard]] QString apdb() const { return package() + u"/Database/apdb"_s; }

    [[nodiscard]] QString earlier() const { return folder() + u"/earlier"_s; }

    [[nodiscard]] QString journalPath() const
    {
        QDirIterator walk(
            folder() + u"/state"_s, {u"journal"_s}, QDir::Files, QDirIterator::Subdirectories);
        return walk.hasNext() ? walk.next() : QString();
    }

    static void copyDatabases(const QString& from, const QString& to)
    {
        ASSERT_TRUE(QDir().mkpath(to));
        for (const QString& name :
             {u"/Library.apdb"_s, u"/Properties.apdb"_s, u"/ImageProxies.apdb"_s}) {
            QFile::remove(to + name);
            ASSERT_TRUE(QFile::copy(from + name, to + name));
        }
    }
};

TEST_F(RecoveryAfterGoingBack, filesOfACommittedTurnStayAfterACrash)
{
    crashAfterACommit();
    const QStringList files = pictureFiles();
    ASSERT_EQ(files.size(), 3);
    goBack();
    recover();
    EXPECT_EQ(rows(u"RKMaster"_s), 0);
    EXPECT_EQ(pictureFiles(), files) << "the copy may be the last picture of a deleted original";
}

TEST_F(RecoveryAfterGoingBack, filesOfACommittedTurnStayWhileTheCatalogueIsDamaged)
{
    damageCatalogue();
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        const auto turn = library->beginPhotoTurn();
        import(*library, makePicture(u"IMG_1.JPG"_s));
        turn->commit();
        EXPECT_TRUE(library->close().ok());
    }
    const QStringList files = pictureFiles();
    ASSERT_EQ(files.size(), 3);
    goBack();
    recover();
    EXPECT_EQ(pictureFiles(), files);
}

TEST_F(RecoveryAfterGoingBack,
       whatARecoveryFoundCommittedIsNotAskedAgainThoughTheCatalogueIsDamaged)
{
    crashAfterACommit();
    forgetThatItWasCommitted();
    damageCatalogue();
    recover();
    const QStringList files = pictureFiles();
    ASSERT_EQ(files.size(), 3);
    const QList<QByteArray> lines = journal();
    ASSERT_EQ(lines.size(), 2) << "one line, ended";
    EXPECT_TRUE(lines.first().contains("\"catalogues\":true")) << lines.first().constData();
    EXPECT_TRUE(lines.first().contains("\"masters\":[]")) << lines.first().constData();
    goBack();
    recover();
    EXPECT_EQ(pictureFiles(), files);
}
