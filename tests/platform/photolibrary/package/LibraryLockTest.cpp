#include "LibraryLock.h"

#include "ChildProcess.h"
#include "FlushRecorder.h"
#include "WritableLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <iostream>

using namespace Qt::StringLiterals;

namespace
{

/// From now on this process gets no lock of any file, as on a network drive without a lock service.
bool giveNoLocks()
{
    std::array rules{
        sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
        sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, 1, SYS_flock}, // any other: the next but one
        sock_filter{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | ENOLCK},
        sock_filter{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
    };
    const sock_fprog program{static_cast<unsigned short>(rules.size()), rules.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

} // namespace

TEST(LibraryLock, aHeldLockIsRefusedNamingLibraryAndHolder)
{
    const QTemporaryDir folder;
    const QString state = folder.path() + u"/state/of/library"_s;
    const auto first = LibraryLock::take(u"/pictures/A.photolibrary"_s, state);
    ASSERT_TRUE(first.ok()) << first.error().message.toStdString();
    const auto second = LibraryLock::take(u"/pictures/A.photolibrary"_s, state);
    ASSERT_FALSE(second.ok());
    EXPECT_EQ(second.error().code, ErrorCode::InUse);
    EXPECT_TRUE(second.error().message.contains(u"/pictures/A.photolibrary"_s));
    const QString holder = u"process %1 "_s.arg(QCoreApplication::applicationPid());
    EXPECT_TRUE(second.error().message.contains(holder)) << second.error().message.toStdString();
}

TEST(LibraryLock, aLockGivenUpInGoodOrderLeavesNobodyBehind)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(LibraryLock::take(u"/A"_s, folder.path()).ok()); // given up at once
    const auto next = LibraryLock::take(u"/A"_s, folder.path());
    ASSERT_TRUE(next.ok()) << next.error().message.toStdString();
    EXPECT_EQ(next.value()->leftBehind(), QString());
}

TEST(LibraryLock, aCrashedHolderNoLongerHoldsItButIsNamed)
{
    const QTemporaryDir folder;
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const auto lock = LibraryLock::take(u"/A"_s, folder.path());
        ::_exit(lock.ok() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    const auto next = LibraryLock::take(u"/A"_s, folder.path());
    ASSERT_TRUE(next.ok()) << next.error().message.toStdString();
    EXPECT_TRUE(next.value()->leftBehind().startsWith(u"process "_s))
        << next.value()->leftBehind().toStdString();
}

TEST(LibraryLock, aFileSystemThatGivesNoLocksIsNotTakenForAnotherCorvane)
{
    const QTemporaryDir folder;
    ChildProcess child([&](ChildProcess&) {
        const bool isSo = giveNoLocks();
        const auto lock = LibraryLock::take(u"/pictures/A.photolibrary"_s, folder.path());
        const QString message = lock.ok() ? QString() : lock.error().message;
        std::cerr << message.toStdString() << '\n';
        if (isSo && !lock.ok() && lock.error().code == ErrorCode::NotWritable &&
            message.contains(
                u"Could not lock \"%1/lock\": No locks available"_s.arg(folder.path())) &&
            message.contains(u"/pictures/A.photolibrary"_s) &&
            message.contains(u"XDG_STATE_HOME"_s)) {
            ChildProcess::crash();
        }
    });
    EXPECT_TRUE(child.crashed()) << "it was told otherwise";
}

TEST(LibraryLock, thePathToTheStateFolderIsFlushedThoughItWasThereBefore)
{
    const QTemporaryDir folder;
    const QString top = QFileInfo(folder.path()).canonicalFilePath();
    ASSERT_TRUE(QDir().mkpath(top + u"/state/corvane"_s)); // as the crash log's writer does
    const FlushRecorder recorder;
    ASSERT_TRUE(LibraryLock::take(u"/A"_s, top + u"/state/corvane/libraries/A"_s).ok());
    for (const QString& path : {QString(), u"/state"_s, u"/state/corvane"_s}) {
        EXPECT_TRUE(recorder.flushed().contains(top + path)) << path.toStdString();
    }
}

class LockedLibrary : public WritableLibrary
{
};

TEST_F(LockedLibrary, aSecondWriterIsRefusedNamingThePathAndTheFirstGoesOn)
{
    const auto first = open(Access::Write);
    ASSERT_NE(first, nullptr);
    const auto second = PhotoLibrary::open(package(), {Access::Write, false});
    ASSERT_FALSE(second.ok());
    EXPECT_EQ(second.error().code, ErrorCode::InUse);
    EXPECT_TRUE(second.error().message.contains(package())) << second.error().message.toStdString();

    import(*first, makePicture(u"IMG_1.JPG"_s));
    EXPECT_TRUE(first->close().ok());
    EXPECT_EQ(rows(u"RKMaster"_s), 1);
    EXPECT_NE(open(Access::Write), nullptr) << "the lock outlived its holder";
    expectSound();
}

TEST_F(LockedLibrary, aReaderIsWelcomeBesideTheWriter)
{
    const auto writer = open(Access::Write);
    ASSERT_NE(writer, nullptr);
    const auto reader = open(Access::Read);
    ASSERT_NE(reader, nullptr);
    import(*writer, makePicture(u"IMG_1.JPG"_s));
    const Result<QList<PhotoFacts>> photos = reader->photos();
    ASSERT_TRUE(photos.ok());
    EXPECT_EQ(photos.value().size(), 1);
}
