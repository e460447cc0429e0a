#include "ChildProcess.h"
#include "Connection.h"
#include "Directories.h"
#include "FileLocks.h"
#include "QtPrinters.h"
#include "WritableLibrary.h"

#include <QDirIterator>

#include <chrono>
#include <future>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A library whose databases another program has locked.
class LockedDatabases : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        qputenv("XDG_STATE_HOME", QFile::encodeName(folder() + u"/state"_s));
        auto opened = Connection::open(package(), Connection::Mode::Write);
        ASSERT_TRUE(opened.ok()) << opened.error().message.toStdString();
        m_other = std::move(opened).value();
    }

    void TearDown() override
    {
        m_other.reset();
        qunsetenv("XDG_STATE_HOME");
    }

    /// The other program is about to write: nobody else may, but they may read.
    void lockForWriting() { m_other->database().exec("BEGIN IMMEDIATE"); }

    /// The other program is committing: nobody else may even read.
    void lockAgainstReading() { m_other->database().exec("BEGIN EXCLUSIVE"); }

    void giveUp() { m_other->rollback(); }

    /// Opens and closes the library.
    [[nodiscard]] Result<void> opened(Access access) const
    {
        auto library = PhotoLibrary::open(package(), {access, false});
        return library.ok() ? library.value()->close() : library.error();
    }

    /// The same on a thread of its own.
    [[nodiscard]] std::future<Result<void>> opening(Access access) const
    {
        return std::async(std::launch::async, [this, access] { return opened(access); });
    }

    /// Whether a writer of ours has got past its own lock, the one outside the package.
    [[nodiscard]] bool hasWriter() const
    {
        QDirIterator walk(
            Directories::state(), {u"lock"_s}, QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            walk.next();
            if (walk.fileInfo().size() > 0) {
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] QString inUse() const
    {
        return u"The library \"%1\" is in use by another program: quit that and try again."_s.arg(
            package());
    }

    /// Long enough for whoever does not wait to give up; no limit to anything.
    static constexpr auto kWhile = 300ms;

private:
    std::unique_ptr<Connection> m_other;
};

TEST_F(LockedDatabases, aWriterWaitsForALockThatIsGivenUpThenOpens)
{
    lockForWriting();
    std::future<Result<void>> writer = opening(Access::Write);
    while (!hasWriter() && writer.wait_for(1ms) == std::future_status::timeout) {
    }
    EXPECT_EQ(writer.wait_for(kWhile), std::future_status::timeout) << "it did not wait";
    giveUp();
    const Result<void> done = writer.get();
    EXPECT_TRUE(done.ok()) << done.error().message.toStdString();
}

TEST_F(LockedDatabases, anybodyWaitsForAnotherProgramsCommit)
{
    for (const Access access : {Access::Read, Access::Write}) {
        lockAgainstReading();
        std::future<Result<void>> mine = opening(access);
        EXPECT_EQ(mine.wait_for(kWhile), std::future_status::timeout) << "it did not wait";
        giveUp();
        const Result<void> done = mine.get();
        EXPECT_TRUE(done.ok()) << done.error().message.toStdString();
    }
}

TEST_F(LockedDatabases, aReaderNeedNotWaitForAWriter)
{
    lockForWriting();
    const Result<void> done = opened(Access::Read);
    EXPECT_TRUE(done.ok()) << done.error().message.toStdString();
}

TEST_F(LockedDatabases, aLockThatIsNotGivenUpIsSaidWithTheRemedy)
{
    lockForWriting();
    const Result<void> writer = opened(Access::Write);
    ASSERT_FALSE(writer.ok());
    EXPECT_EQ(writer.error().code, ErrorCode::InUse);
    EXPECT_EQ(writer.error().message, inUse());
    EXPECT_FALSE(hasWriter()) << "who was refused keeps others out";
    giveUp();

    lockAgainstReading();
    const Result<void> reader = opened(Access::Read);
    ASSERT_FALSE(reader.ok());
    EXPECT_EQ(reader.error().code, ErrorCode::InUse);
    EXPECT_EQ(reader.error().message, inUse());
    giveUp();
    EXPECT_TRUE(opened(Access::Write).ok());
}

TEST_F(LockedDatabases, aLockFromBeforeTheComputerWasStartedIsTakenOver)
{
    // What such a lock leaves is its file alone.
    ASSERT_TRUE(open(Access::Write)->close().ok());
    QDirIterator walk(Directories::state(), {u"lock"_s}, QDir::Files, QDirIterator::Subdirectories);
    ASSERT_TRUE(walk.hasNext());
    walk.next();
    QFile lock(walk.filePath());
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.write("process 1 on here since 2001-01-01 00:00:00");
    lock.close();
    testing::internal::CaptureStderr();
    const auto library = open(Access::Write);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(library, nullptr);
    EXPECT_NE(log.find("was not closed by process 1 on here"), std::string::npos) << log;
}

/// A library that another process of this program writes to.
class LibraryOfAnotherProcess : public WritableLibrary
{
};

TEST_F(LibraryOfAnotherProcess, theProcessThatHoldsItIsNamedUntilItEnds)
{
    ChildProcess other([this](ChildProcess& self) {
        const auto library = PhotoLibrary::open(package(), {Access::Write, false});
        if (library.ok()) {
            self.stay();
        }
    });
    ASSERT_TRUE(other.stays());
    const auto refused = PhotoLibrary::open(package(), {Access::Write, false});
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().code, ErrorCode::InUse);
    const QString& message = refused.error().message;
    EXPECT_TRUE(message.startsWith(
        u"Another Corvane writes to the library \"%1\" (process %2 on "_s.arg(package()).arg(
            other.id())))
        << message.toStdString();
    EXPECT_TRUE(message.contains(u" since 2"_s)) << message.toStdString();
    EXPECT_TRUE(message.endsWith(u"): wait for it to end."_s)) << message.toStdString();
    const auto reader = open(Access::Read);
    ASSERT_NE(reader, nullptr) << "reading goes on";
    ASSERT_EQ(reader->warnings().size(), 1);
    const QString told = reader->warnings().first();
    const QString writes =
        u"Another Corvane writes to the library \"%1\" (process %2 on %3 since 2"_s;
    EXPECT_TRUE(
        told.startsWith(writes.arg(package()).arg(other.id()).arg(QSysInfo::machineHostName())))
        << told.toStdString();
    other.end();

    testing::internal::CaptureStderr();
    const auto library = open(Access::Write);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(library, nullptr) << "the lock outlived its holder";
    const QString left =
        u"The library \"%1\" was not closed by process %2 on "_s.arg(package()).arg(other.id());
    EXPECT_NE(log.find(left.toStdString()), std::string::npos) << log;
    EXPECT_TRUE(open(Access::Read)->warnings().isEmpty()) << "it is this process that writes";
}

TEST_F(LibraryOfAnotherProcess, anotherUsersProcessIsNoticedThoughItKeepsItsLockElsewhere)
{
    ChildProcess other([this](ChildProcess& self) {
        qputenv("XDG_STATE_HOME", QFile::encodeName(folder() + u"/elsewhere"_s));
        const auto library = PhotoLibrary::open(package(), {Access::Write, false});
        if (library.ok()) {
            self.stay();
        }
    });
    ASSERT_TRUE(other.stays());
    const auto refused = PhotoLibrary::open(package(), {Access::Write, false});
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().code, ErrorCode::InUse);
    const QString& message = refused.error().message;
    EXPECT_TRUE(
        message.startsWith(u"Another Corvane writes to the library \"%1\" ("_s.arg(package())))
        << message.toStdString();
    const auto reader = open(Access::Read);
    ASSERT_NE(reader, nullptr) << "reading goes on";
    ASSERT_EQ(reader->warnings().size(), 1);
    EXPECT_EQ(
        reader->warnings().first(),
        u"Another Corvane writes to the library \"%1\" (%2): it is only read here, and what "
        "is shown may change."_s.arg(package(), message.section(u'(', -1).section(u')', 0, 0)));
    other.end();
    EXPECT_NE(open(Access::Write), nullptr) << "the lock outlived its holder";
    EXPECT_TRUE(open(Access::Read)->warnings().isEmpty()) << "nobody writes";
}

TEST_F(LibraryOfAnotherProcess, aReadersLookAtTheLockKeepsNoWriterOut)
{
    const auto reader = open(Access::Read);
    ASSERT_NE(reader, nullptr);
    EXPECT_NE(open(Access::Write), nullptr);
}

TEST_F(LibraryOfAnotherProcess, whoHasLockedADatabaseIsNamed)
{
    ChildProcess other([this](ChildProcess& self) {
        const auto databases = Connection::open(package(), Connection::Mode::Write);
        if (databases.ok()) {
            databases.value()->database().exec("BEGIN EXCLUSIVE");
            self.stay();
        }
    });
    ASSERT_TRUE(other.stays());
    const auto refused = PhotoLibrary::open(package(), {Access::Read, false});
    ASSERT_FALSE(refused.ok());
    const QString program = FileLocks::nameOf(other.id());
    EXPECT_EQ(
        refused.error().message,
        u"The library \"%1\" is in use by another program (%2, process %3): quit that and try "
        "again."_s.arg(package(), program)
            .arg(other.id()));
}
