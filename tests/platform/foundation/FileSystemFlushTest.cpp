#include "FileSystemFlush.h"

#include "FlushRecorder.h"
#include "OrdinaryUser.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/vfs.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 kExt4 = 0xEF53;
constexpr qint64 kFuse = 0x65735546;
constexpr qint64 kNfs = 0x6969;
constexpr qint64 kUnknown = 0x12345678;

/// Whether a descriptor of this process is open for writing to that file.
bool isOpenForWriting(const QString& path)
{
    const QDir descriptors(u"/proc/self/fd"_s);
    const QStringList numbers = descriptors.entryList(QDir::Files | QDir::System);
    return std::ranges::any_of(numbers, [&](const QString& number) {
        return QFile::symLinkTarget(descriptors.filePath(number)) == path &&
               (::fcntl(number.toInt(), F_GETFL) & O_ACCMODE) != O_RDONLY;
    });
}

} // namespace

/// A folder with files in it and in a folder of its own.
class FileSystemFlushTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        ASSERT_TRUE(QDir(root()).mkpath(u"a/empty"_s));
        for (const QString& name : {u"/one"_s, u"/a/two"_s, u"/a/.hidden"_s}) {
            QFile file(root() + name);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
        ASSERT_TRUE(QFile::link(u"/nowhere"_s, root() + u"/link"_s));
    }

    [[nodiscard]] QString root() const { return QFileInfo(m_folder.path()).canonicalFilePath(); }

    [[nodiscard]] QSet<QString> all() const
    {
        QSet<QString> paths{root()};
        for (const QString& name :
             {u"/one"_s, u"/a"_s, u"/a/two"_s, u"/a/.hidden"_s, u"/a/empty"_s}) {
            paths.insert(root() + name);
        }
        return paths;
    }

    /// What is flushed where the folder lies on a file system of that type.
    [[nodiscard]] QSet<QString> flushedOn(qint64 fileSystem) const
    {
        FlushRecorder recorder;
        recorder.pretendFileSystem(fileSystem);
        EXPECT_TRUE(FileSystemFlush(root()).flush().ok());
        return recorder.flushed();
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(FileSystemFlushTest, onADiskOfThisComputerIsDoneInOneGo)
{
    EXPECT_EQ(flushedOn(kExt4), QSet<QString>{root()});
}

TEST_F(FileSystemFlushTest, whereOneGoMayNotReachTheDiskIsDoneFileByFile)
{
    for (const qint64 fileSystem : {kFuse, kNfs, kUnknown}) {
        EXPECT_EQ(flushedOn(fileSystem), all()) << fileSystem;
    }
}

TEST_F(FileSystemFlushTest, fileByFileFailsWithTheNameOfTheFile)
{
    FlushRecorder recorder;
    recorder.pretendFileSystem(kFuse);
    recorder.failWhere([](const QString& path) { return path.endsWith(u"/a/two"_s); });
    const Result<void> flushed = FileSystemFlush(root()).flush();
    ASSERT_FALSE(flushed.ok());
    EXPECT_TRUE(flushed.error().message.contains(u"/a/two"_s))
        << flushed.error().message.toStdString();
}

TEST_F(FileSystemFlushTest, filesAreOpenForWritingWhileTheyAreFlushedWhereTheyMayBeWritten)
{
    const QString closed = root() + u"/one"_s;
    ASSERT_TRUE(QFile::setPermissions(closed, QFile::ReadOwner | QFile::ReadOther));
    const OrdinaryUser user({root()});
    QMap<QString, bool> areForWriting;
    FlushRecorder recorder;
    recorder.failWhere([&areForWriting](const QString& path) {
        areForWriting.insert(path, isOpenForWriting(path));
        return false;
    });
    ASSERT_TRUE(FileSystemFlush::eachBelow(root()).ok());
    for (const QString& name : {u"/a/two"_s, u"/a/.hidden"_s}) {
        EXPECT_TRUE(areForWriting.value(root() + name)) << name.toStdString();
    }
    EXPECT_FALSE(areForWriting.value(closed, true)) << "it is flushed all the same";
}

TEST_F(FileSystemFlushTest, ofAFolderThatIsNotThereIsAnError)
{
    const Result<void> flushed = FileSystemFlush(root() + u"/none"_s).flush();
    ASSERT_FALSE(flushed.ok());
    EXPECT_EQ(flushed.error().code, ErrorCode::NotFound);
}
