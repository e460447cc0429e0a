#include "FileLocks.h"

#include "ChildProcess.h"
#include "FileDescriptor.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>

using namespace Qt::StringLiterals;
using FileLocks::Kind;

namespace
{

/// A file, on a file system whose locks the system tells.
class FileLocksTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(QFile(m_path).open(QIODevice::WriteOnly)); }

    /// Locks the file as long as the process lasts that calls it, or `file`.
    [[nodiscard]] static bool lock(const FileDescriptor& file, Kind kind)
    {
        struct flock whole = {};
        whole.l_type = F_WRLCK;
        return kind == Kind::Flock ? ::flock(file.number(), LOCK_EX) == 0
                                   : ::fcntl(file.number(), F_SETLK, &whole) == 0;
    }

    /// Locks the file and stays.
    void lockAndStay(ChildProcess& self, Kind kind) const
    {
        const FileDescriptor file(opened());
        if (lock(file, kind)) {
            self.stay();
        }
    }

    [[nodiscard]] int opened() const
    {
        return ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CLOEXEC);
    }

    QTemporaryDir m_folder{u"/dev/shm/locks-XXXXXX"_s};
    QString m_path{m_folder.filePath(u"file"_s)};
};

TEST_F(FileLocksTest, aHolderIsToldByTheKindOfItsLock)
{
    for (const Kind kind : {Kind::Flock, Kind::Posix}) {
        ChildProcess other([&](ChildProcess& self) { lockAndStay(self, kind); });
        ASSERT_TRUE(other.stays());
        const Kind otherKind = kind == Kind::Flock ? Kind::Posix : Kind::Flock;
        EXPECT_EQ(FileLocks::holders(kind, {m_path}), QList<qint64>{other.id()});
        EXPECT_TRUE(FileLocks::holders(otherKind, {m_path}).isEmpty());
        EXPECT_TRUE(FileLocks::holders(kind, {m_folder.path()}).isEmpty()) << "another file";
    }
}

TEST_F(FileLocksTest, aHolderOfSeveralFilesIsToldOnce)
{
    ChildProcess other([&](ChildProcess& self) { lockAndStay(self, Kind::Posix); });
    ASSERT_TRUE(other.stays());
    const QString link = m_folder.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(m_path, link));
    EXPECT_EQ(FileLocks::holders(Kind::Posix, {m_path, link}).size(), 1);
}

TEST_F(FileLocksTest, nobodyIsToldOfALockOfOnesOwnNorOfAFileThatIsMissing)
{
    const FileDescriptor file(opened());
    ASSERT_TRUE(lock(file, Kind::Posix));
    EXPECT_TRUE(FileLocks::holders(Kind::Posix, {m_path, u"/nowhere"_s}).isEmpty());
}

TEST_F(FileLocksTest, aProcessHasTheStartThatTheSystemKnows)
{
    constexpr qint64 kSlack = 2000; // milliseconds
    const QDateTime before = QDateTime::currentDateTime();
    QProcess child;
    child.start(u"cat"_s, QStringList());
    ASSERT_TRUE(child.waitForStarted());
    const QDateTime after = QDateTime::currentDateTime();
    const QDateTime start = FileLocks::startOf(child.processId());
    EXPECT_GE(start, before.addMSecs(-kSlack));
    EXPECT_LE(start, after.addMSecs(kSlack));
    const QDateTime own = FileLocks::startOf(QCoreApplication::applicationPid());
    EXPECT_TRUE(own.isValid());
    EXPECT_LE(own, start);
    EXPECT_FALSE(FileLocks::startOf(0).isValid());
    child.closeWriteChannel();
    EXPECT_TRUE(child.waitForFinished());
}

TEST_F(FileLocksTest, aProcessHasTheNameThatTheSystemKnows)
{
    EXPECT_TRUE(FileLocks::nameOf(QCoreApplication::applicationPid()).startsWith(u"corvane_"_s));
    EXPECT_TRUE(FileLocks::nameOf(0).isEmpty());
}

} // namespace
