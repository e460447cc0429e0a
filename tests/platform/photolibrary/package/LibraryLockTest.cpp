#include "LibraryLock.h"

#include "FlushRecorder.h"
#include "WritableLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

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
