#include "DesktopTrash.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace
{

/// A data folder that is not there yet, and a file to throw away on the same volume.
class DesktopTrashTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        qputenv("XDG_DATA_HOME", QFile::encodeName(dataHome()));
    }

    void TearDown() override { qunsetenv("XDG_DATA_HOME"); }

    [[nodiscard]] QString dataHome() const { return m_folder.filePath(u"home/data"_s); }

    [[nodiscard]] QString inTrash(const QString& path) const
    {
        return dataHome() + u"/Trash/"_s + path;
    }

    static bool write(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

    static QByteArray read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
    }

    static mode_t modeOf(const QString& path)
    {
        struct stat attributes {
        };

        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &attributes), 0);
        return attributes.st_mode & 07777U;
    }

    // Not where TMPDIR says: that may lie in memory, on the other volume.
    QTemporaryDir m_folder{u"/var/tmp/corvane-trash-XXXXXX"_s};
    DesktopTrash m_trash;
};

TEST_F(DesktopTrashTest, theFileGoesToTheTrashOfTheDataFolderWhichIsMade)
{
    const QString path = m_folder.filePath(u"Corvane_1.crash"_s);
    ASSERT_TRUE(write(path, "content"));
    EXPECT_EQ(m_trash.moveToTrash(path), 0);
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(read(inTrash(u"files/Corvane_1.crash"_s)), "content");
    for (const QString& folder : {u""_s, u"files"_s, u"info"_s}) {
        EXPECT_EQ(modeOf(inTrash(folder)), 0700U) << qPrintable(folder);
    }
}

TEST_F(DesktopTrashTest, theCurrentFolderIsNotTakenForATrash)
{
    const QString path = m_folder.filePath(u"a.crash"_s);
    ASSERT_TRUE(write(path, "content"));
    const QStringList before = QDir::current().entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    EXPECT_EQ(m_trash.moveToTrash(path), 0);
    EXPECT_EQ(QDir::current().entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
}

TEST_F(DesktopTrashTest, itIsKeptWhereTheFileWasAndWhenItWent)
{
    const QString path = m_folder.filePath(u"\u00e4 b%.crash"_s);
    ASSERT_TRUE(write(path, "content"));
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    ASSERT_EQ(m_trash.moveToTrash(path), 0);
    const QList<QByteArray> lines = read(inTrash(u"info/\u00e4 b%.crash.trashinfo"_s)).split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines.at(0), "[Trash Info]");
    EXPECT_EQ(lines.at(1),
              "Path=" + QFile::encodeName(QDir(m_folder.path()).canonicalPath()) +
                  "/%C3%A4%20b%25.crash");
    ASSERT_TRUE(lines.at(2).startsWith("DeletionDate="));
    const QDateTime date =
        QDateTime::fromString(QString::fromLatin1(lines.at(2).mid(13)), Qt::ISODate);
    EXPECT_GE(date, before);
    EXPECT_LE(date, QDateTime::currentDateTime());
    EXPECT_EQ(lines.at(3), "");
}

TEST_F(DesktopTrashTest, twoFilesOfOneNameAreKept)
{
    const QString path = m_folder.filePath(u"a.crash"_s);
    ASSERT_TRUE(write(path, "first"));
    ASSERT_EQ(m_trash.moveToTrash(path), 0);
    ASSERT_TRUE(write(path, "second"));
    ASSERT_EQ(m_trash.moveToTrash(path), 0);
    EXPECT_EQ(read(inTrash(u"files/a.crash"_s)), "first");
    EXPECT_EQ(read(inTrash(u"files/a.crash 2"_s)), "second");
    EXPECT_TRUE(QFile::exists(inTrash(u"info/a.crash 2.trashinfo"_s)));
}

TEST_F(DesktopTrashTest, aFileThatLiesThereWithoutInformationIsNotWrittenOver)
{
    ASSERT_TRUE(QDir().mkpath(inTrash(u"files"_s)));
    ASSERT_TRUE(write(inTrash(u"files/a.crash"_s), "older"));
    const QString path = m_folder.filePath(u"a.crash"_s);
    ASSERT_TRUE(write(path, "newer"));
    ASSERT_EQ(m_trash.moveToTrash(path), 0);
    EXPECT_EQ(read(inTrash(u"files/a.crash"_s)), "older");
    EXPECT_EQ(read(inTrash(u"files/a.crash 2"_s)), "newer");
    EXPECT_FALSE(QFile::exists(inTrash(u"info/a.crash.trashinfo"_s)));
}

TEST_F(DesktopTrashTest, aNameOfFullLengthFindsItsPlace)
{
    const QString path = m_folder.filePath(QString(125, u'\u00e4') + u".crash"_s); // 256 bytes - 1
    ASSERT_TRUE(write(path.chopped(1), "content"));
    ASSERT_EQ(m_trash.moveToTrash(path.chopped(1)), 0);
    EXPECT_EQ(QDir(inTrash(u"files"_s)).entryList(QDir::Files),
              QStringList{QString(115, u'\u00e4')});
}

TEST_F(DesktopTrashTest, aLinkIsMovedAndNotWhatItPointsTo)
{
    const QString target = m_folder.filePath(u"target"_s);
    const QString link = m_folder.filePath(u"link.crash"_s);
    ASSERT_TRUE(write(target, "content"));
    ASSERT_TRUE(QFile::link(target, link));
    ASSERT_EQ(m_trash.moveToTrash(link), 0);
    EXPECT_EQ(read(target), "content");
    EXPECT_TRUE(QFileInfo(inTrash(u"files/link.crash"_s)).isSymLink());
}

TEST_F(DesktopTrashTest, whatIsNotThereCannotBeMoved)
{
    EXPECT_EQ(m_trash.moveToTrash(m_folder.filePath(u"none"_s)), ENOENT);
    EXPECT_EQ(m_trash.moveToTrash(m_folder.filePath(u"no folder/none"_s)), ENOENT);
    EXPECT_EQ(m_trash.moveToTrash({}), ENOENT);
    EXPECT_EQ(QDir(inTrash(u"info"_s)).entryList(QDir::Files), QStringList());
}

TEST_F(DesktopTrashTest, whereItCannotBeMadeTheFileStays)
{
    ASSERT_TRUE(QDir().mkpath(dataHome() + u"/Trash"_s));
    ASSERT_TRUE(write(inTrash(u"info"_s), "a file where a folder belongs"));
    const QString path = m_folder.filePath(u"a.crash"_s);
    ASSERT_TRUE(write(path, "content"));
    EXPECT_EQ(m_trash.moveToTrash(path), ENOTDIR);
    EXPECT_EQ(read(path), "content");
}

TEST_F(DesktopTrashTest, aFileOfAnotherVolumeStaysOnIt)
{
    const QTemporaryDir elsewhere(u"/dev/shm/corvane-trash-XXXXXX"_s);

    struct stat here {
    };

    struct stat there {
    };

    // glibc's shared memory needs this volume, so every machine has it.
    ASSERT_TRUE(elsewhere.isValid()) << "/dev/shm cannot be written to";
    ASSERT_EQ(::stat(qUtf8Printable(m_folder.path()), &here), 0);
    ASSERT_EQ(::stat(qUtf8Printable(elsewhere.path()), &there), 0);
    ASSERT_NE(here.st_dev, there.st_dev) << "/var/tmp lies in memory";
    const QString name = QDir(elsewhere.path()).dirName() + u".crash"_s;
    const QString path = elsewhere.filePath(name);
    ASSERT_TRUE(write(path, "content"));
    const QString trash = u"/dev/shm/.Trash-%1/"_s.arg(::getuid());
    const bool wasThere = QFile::exists(trash);
    EXPECT_EQ(m_trash.moveToTrash(path), 0);
    EXPECT_EQ(read(trash + u"files/"_s + name), "content");
    EXPECT_TRUE(read(trash + u"info/"_s + name + u".trashinfo"_s)
                    .contains("Path=" + QFile::encodeName(QDir(elsewhere.path()).dirName()) + '/'))
        << "told relative to the top of the volume";
    QFile::remove(trash + u"files/"_s + name);
    QFile::remove(trash + u"info/"_s + name + u".trashinfo"_s);
    if (!wasThere) {
        QDir().rmdir(trash + u"files"_s);
        QDir().rmdir(trash + u"info"_s);
        QDir().rmdir(trash);
    }
}

} // namespace
