#include "CommandFixture.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

class BackupCommandTest : public CommandFixture
{
protected:
    void SetUp() override
    {
        qputenv("XDG_STATE_HOME", QFile::encodeName(m_folder.filePath(u"state"_s)));
        CommandFixture::SetUp();
    }

    void TearDown() override { qunsetenv("XDG_STATE_HOME"); }
};

TEST_F(BackupCommandTest, aCopyIsMadeAndListed)
{
    EXPECT_EQ(run({u"backup"_s, library(), u"--json"_s}), 0) << m_err.toStdString();
    const QJsonObject made = document();
    EXPECT_EQ(made.value(u"photos"_s).toInteger(), 3);
    EXPECT_TRUE(QFile::exists(made.value(u"path"_s).toString() + u"/AlbumData.xml"_s));
    EXPECT_EQ(run({u"backup"_s, library()}), 0);
    EXPECT_TRUE(m_out.startsWith("The backup 2")) << m_out.toStdString();
    EXPECT_EQ(run({u"backup"_s, library(), u"--list"_s, u"--json"_s}), 0);
    const QJsonArray backups = document().value(u"backups"_s).toArray();
    EXPECT_TRUE(backups.contains(made));
    EXPECT_EQ(run({u"backup"_s, library(), u"--list"_s}), 0);
    EXPECT_EQ(m_out.count('\n'), backups.size());
    EXPECT_TRUE(m_out.contains(made.value(u"date"_s).toString().toUtf8()));
    EXPECT_TRUE(m_out.contains("3 photos"));
}

TEST_F(BackupCommandTest, aCopyIsPutInPlaceAndFilesThatItDoesNotKnowAreNamed)
{
    EXPECT_EQ(run({u"backup"_s, library(), u"--json"_s}), 0);
    const QString date = document().value(u"date"_s).toString();
    {
        auto opened = PhotoLibrary::open(library(), {.access = Access::Write});
        ASSERT_TRUE(opened.ok());
        importPhoto(*opened.value(), u"Later.jpg"_s, u"Later"_s, 70);
    }
    EXPECT_EQ(photos().size(), 4);
    EXPECT_EQ(run({u"backup"_s, library(), u"--restore"_s, date}), 0) << m_err.toStdString();
    EXPECT_TRUE(m_out.startsWith("The library is as it was in the backup " + date.toUtf8()));
    EXPECT_TRUE(m_out.contains("1 file in the library belongs to no photo of it now, and is "
                               "kept:\n  Masters/"))
        << m_out.toStdString();
    EXPECT_EQ(photos().size(), 3);
}

TEST_F(BackupCommandTest, aCatalogueThatDoesNotFollowARestoreIsToldByTheStatusToo)
{
    EXPECT_EQ(run({u"backup"_s, library(), u"--json"_s}), 0);
    const QJsonObject made = document();
    ASSERT_TRUE(QFile::remove(made.value(u"path"_s).toString() + u"/AlbumData.xml"_s));
    QFile catalogue(library() + u"/AlbumData.xml"_s);
    ASSERT_TRUE(catalogue.open(QIODevice::WriteOnly | QIODevice::Truncate));
    catalogue.write("torn");
    catalogue.close();
    EXPECT_EQ(run({u"backup"_s, library(), u"--restore"_s, made.value(u"date"_s).toString()}), 1);
    EXPECT_TRUE(m_out.startsWith("The library is as it was in the backup"));
    EXPECT_TRUE(m_err.contains("AlbumData.xml")) << m_err.toStdString();
    EXPECT_EQ(run({u"backup"_s,
                   library(),
                   u"--restore"_s,
                   made.value(u"date"_s).toString(),
                   u"--json"_s}),
              1);
    const QJsonArray lagging = document().value(u"lagging"_s).toArray();
    ASSERT_EQ(lagging.size(), 1);
    EXPECT_TRUE(lagging.first().toString().contains(u"AlbumData.xml"_s));
}

TEST_F(BackupCommandTest, beforeARestoreItIsSaidThatAnotherProgramChangedTheDatabases)
{
    EXPECT_EQ(run({u"backup"_s, library(), u"--json"_s}), 0);
    const QString date = document().value(u"date"_s).toString();
    QFile database(library() + u"/Database/apdb/Library.apdb"_s);
    ASSERT_TRUE(database.open(QIODevice::ReadWrite));
    ASSERT_TRUE(database.setFileTime(QDateTime::currentDateTime().addSecs(-10),
                                     QFileDevice::FileModificationTime));
    database.close();
    EXPECT_EQ(run({u"backup"_s, library(), u"--restore"_s, date}), 0) << m_err.toStdString();
    EXPECT_TRUE(m_err.contains("changed within the last minute")) << m_err.toStdString();
}

TEST_F(BackupCommandTest, aDateThatThereIsNotIsRefused)
{
    EXPECT_EQ(run({u"backup"_s, library(), u"--restore"_s, u"1999"_s}), 3);
    EXPECT_TRUE(m_err.contains("no backup of the date \"1999\"")) << m_err.toStdString();
    EXPECT_EQ(run({u"backup"_s, library(), u"--restore"_s, u""_s}), 2);
    EXPECT_EQ(run({u"backup"_s, library(), u"--restore"_s}), 2);
}

TEST_F(BackupCommandTest, optionsThatContradictEachOtherAreWrongUsage)
{
    EXPECT_EQ(run({u"backup"_s, library(), u"--list"_s, u"--restore"_s, u"2026"_s}), 2);
    EXPECT_EQ(run({u"backup"_s, library(), u"--after-crash"_s}), 2);
}

TEST_F(BackupCommandTest, whatIsNoLibraryIsRefused)
{
    EXPECT_EQ(run({u"backup"_s, m_folder.path()}), 3);
    EXPECT_EQ(run({u"backup"_s, m_folder.path(), u"--list"_s}), 3);
    EXPECT_EQ(run({u"backup"_s, m_folder.path(), u"--restore"_s, u"2026"_s}), 3);
}
