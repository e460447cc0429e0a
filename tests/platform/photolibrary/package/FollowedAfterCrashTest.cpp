#include "Backup.h"
#include "ChildProcess.h"
#include "OrdinaryUser.h"
#include "WritableLibrary.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

/// Sidecars and catalogues that an opening writes because the run before crashed.
class FollowedAfterCrash : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        qputenv("XDG_STATE_HOME", QFile::encodeName(folder() + u"/state"_s));
        m_lagging = contentOf(package());
        const QString picture = makePicture(u"IMG_1.JPG"_s);
        ChildProcess writer([&](ChildProcess&) {
            const auto library = PhotoLibrary::open(package(), {Access::Write, false});
            const auto turn = library.value()->beginPhotoTurn();
            import(*library.value(), picture);
            turn->commit();
            ChildProcess::crash();
        });
        ASSERT_TRUE(writer.crashed());
        ASSERT_EQ(copies().size(), 1);
        ASSERT_EQ(contentOf(package()), m_lagging);
    }

    void TearDown() override { qunsetenv("XDG_STATE_HOME"); }

    /// Of the catalogue of a package or a copy.
    [[nodiscard]] static QByteArray contentOf(const QString& path)
    {
        QFile file(path + u"/AlbumData.xml"_s);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }

    /// The library's folder of dated copies.
    [[nodiscard]] QString backups() const
    {
        const QString all = folder() + u"/state/corvane/backups"_s;
        return all + u'/' + QDir(all).entryList(QDir::Dirs | QDir::NoDotAndDotDot).value(0);
    }

    [[nodiscard]] QStringList copies() const { return Backup::names(backups()); }

    [[nodiscard]] const QByteArray& lagging() const { return m_lagging; }

private:
    QByteArray m_lagging;
};

TEST_F(FollowedAfterCrash, areBackedUpBefore)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    EXPECT_NE(contentOf(package()), lagging());
    ASSERT_EQ(copies().size(), 2);
    EXPECT_EQ(contentOf(backups() + u'/' + copies().last()), lagging());
    import(*library, makePicture(u"IMG_2.JPG"_s));
    EXPECT_TRUE(library->close().ok());
    EXPECT_EQ(copies().size(), 2) << "one copy a run";
    expectSound();
}

TEST_F(FollowedAfterCrash, stayAsTheyAreWhereNoBackupCanBeMade)
{
    const OrdinaryUser user({folder()});
    {
        const WithPermissions closed(backups(), 0555);
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(contentOf(package()), lagging());
        const Result<void> closing = library->close();
        ASSERT_FALSE(closing.ok());
        EXPECT_TRUE(closing.error().message.contains(u"No backup"_s))
            << closing.error().message.toStdString();
    }
    EXPECT_EQ(contentOf(package()), lagging());
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_NE(contentOf(package()), lagging()) << "it follows once it can";
    expectSound();
}

TEST_F(FollowedAfterCrash, aDamagedCatalogueMakesNoCopyAtEachOpening)
{
    {
        QFile file(package() + u"/AlbumData.xml"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write("torn"), 4);
    }
    EXPECT_TRUE(open(Access::Write)->close().ok());
    ASSERT_EQ(copies().size(), 2) << "its sidecars followed";
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_EQ(copies().size(), 2);
}
