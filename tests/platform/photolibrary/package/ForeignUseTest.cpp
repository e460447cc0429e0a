#include "ForeignUse.h"

#include "Connection.h"
#include "FlushRecorder.h"
#include "WritableLibrary.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QThread>

#include <filesystem>

using namespace Qt::StringLiterals;

/// What is said of a library when it is opened for writing.
class UsedByOthers : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        setLastChange(3600);
    }

    /// As if each database had been changed so many seconds ago.
    void setLastChange(int seconds) const
    {
        const QDir databases(package() + u"/Database/apdb"_s);
        const QDateTime moment = QDateTime::currentDateTimeUtc().addSecs(-seconds);
        for (const QString& name : databases.entryList(QDir::Files)) {
            QFile file(databases.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::ReadWrite) &&
                        file.setFileTime(moment, QFileDevice::FileModificationTime));
        }
    }

    /// From now on a database is as if another program had changed it whenever something is flushed
    /// whose path holds `part`. Its file is not opened: closing it would end SQLite's locks on it.
    void changeAtFlushOf(FlushRecorder& recorder, const QString& part) const
    {
        recorder.failWhere([this, part, changes = 0](const QString& path) mutable {
            if (path.contains(part)) {
                std::filesystem::last_write_time(
                    QString(package() + u"/Database/apdb/Faces.db"_s).toStdString(),
                    std::filesystem::file_time_type::clock::now() +
                        std::chrono::milliseconds(++changes));
            }
            return false;
        });
    }

    [[nodiscard]] QString warnings(Access access) const
    {
        const auto library = open(access);
        return library == nullptr ? u"not opened"_s : library->warnings().join(u'\n');
    }

    [[nodiscard]] QString changedRecently() const
    {
        return u"The databases of the library \"%1\" were changed within the last minute, as it "
               "seems by another program. If iPhoto has the library open, quit it before anything "
               "is written: it would write over what changes meanwhile."_s.arg(package());
    }
};

TEST_F(UsedByOthers, aChangeWithinTheLastMinuteIsToldBeforeTheFirstWrite)
{
    setLastChange(50);
    EXPECT_EQ(warnings(Access::Write).toStdString(), changedRecently().toStdString());
}

TEST_F(UsedByOthers, anyDatabaseCountsAlsoOneThatIsNotWrittenHere)
{
    QFile faces(package() + u"/Database/apdb/Faces.db"_s);
    ASSERT_TRUE(
        faces.open(QIODevice::ReadWrite) &&
        faces.setFileTime(QDateTime::currentDateTimeUtc(), QFileDevice::FileModificationTime));
    EXPECT_EQ(warnings(Access::Write).toStdString(), changedRecently().toStdString());
}

TEST_F(UsedByOthers, aChangeIsASignUntilItIsAMinuteOld)
{
    constexpr qint64 kSecond = 1000000000;
    const ForeignUse::Warnings warnings =
        ForeignUse::warnings(package(),
                             package() + u"/none"_s,
                             {.print = "p", .lastChange = 50 * kSecond, .lookedAt = 95 * kSecond});
    EXPECT_FALSE(warnings.passing.isEmpty());
    EXPECT_EQ(warnings.milliseconds, 15000);
    setLastChange(57);
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const QDeadlineTimer patience(30000);
    while (!library->warnings().isEmpty() && !patience.hasExpired()) {
        QThread::msleep(20);
    }
    EXPECT_EQ(library->warnings(), QStringList()) << "it goes by itself";
}

TEST_F(UsedByOthers, anOlderChangeIsNoSign)
{
    setLastChange(70);
    EXPECT_EQ(warnings(Access::Write).toStdString(), "");
}

TEST_F(UsedByOthers, whoOnlyReadsIsToldNothingOfIt)
{
    setLastChange(1);
    EXPECT_EQ(warnings(Access::Read).toStdString(), "");
}

TEST_F(UsedByOthers, aRunDoesNotWarnOfTheChangesOfTheOneBefore)
{
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        import(*library, makePicture(u"IMG_1.JPG"_s));
    }
    EXPECT_EQ(warnings(Access::Write).toStdString(), "");
    {
        auto other = Connection::open(package(), Connection::Mode::Write);
        ASSERT_TRUE(other.ok());
        other.value()->database().exec("UPDATE RKVersion SET name='Lake'");
    }
    EXPECT_EQ(warnings(Access::Write).toStdString(), changedRecently().toStdString());
}

TEST_F(UsedByOthers, whatAnotherProgramWroteWhileTheLibraryWasOpenIsNoOwnChange)
{
    const auto changeAsAnother = [this](const char* sql) {
        auto other = Connection::open(package(), Connection::Mode::Write);
        ASSERT_TRUE(other.ok());
        other.value()->database().exec(sql);
    };
    for (const bool writesAfterwards : {false, true}) {
        {
            const auto library = open(Access::Write);
            ASSERT_NE(library, nullptr);
            import(*library, makePicture(u"IMG_1.JPG"_s));
            changeAsAnother("UPDATE RKVersion SET name = name || '!'");
            if (writesAfterwards) {
                import(*library, makePicture(u"IMG_2.JPG"_s));
            }
            ASSERT_TRUE(library->close().ok());
        }
        EXPECT_EQ(warnings(Access::Write).toStdString(), changedRecently().toStdString());
    }
}

TEST_F(UsedByOthers, whatAnotherProgramWritesWhileTheLibraryIsOpenedIsNoOwnChange)
{
    {
        FlushRecorder recorder;
        changeAtFlushOf(recorder, u"/libraries/"_s);
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        recorder.failWhere(nullptr);
        ASSERT_TRUE(library->close().ok());
    }
    EXPECT_EQ(warnings(Access::Write).toStdString(), changedRecently().toStdString());
}

TEST_F(UsedByOthers, whatAnotherProgramWritesWhileATurnIsUndoneIsNoOwnChange)
{
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        auto turn = library->beginPhotoTurn();
        import(*library, makePicture(u"IMG_1.JPG"_s));
        FlushRecorder recorder;
        changeAtFlushOf(recorder, u"/Masters"_s);
        turn.reset();
        recorder.failWhere(nullptr);
        ASSERT_TRUE(library->close().ok());
    }
    EXPECT_EQ(warnings(Access::Write).toStdString(), changedRecently().toStdString());
}

TEST(SharedFileSystems, ofThoseOfFuseSharesAreTakenForThemAndDisksOfThisComputerAreNot)
{
    const QByteArray mounts =
        "22 27 0:21 / /proc rw,relatime - proc proc rw\n"
        "90 27 0:51 / /home/me/server rw,nosuid - fuse.sshfs me@server:/photos rw\n"
        "91 27 0:52 / /home/me/cloud rw,nosuid shared:4 - fuse.rclone cloud: rw\n"
        "92 27 0:53 / /run/user/1000/gvfs rw,nosuid - fuse.gvfsd-fuse gvfsd-fuse rw\n"
        "93 27 8:17 / /media/me/NTFS\\040disk rw,nosuid - fuseblk /dev/sdb1 rw\n"
        "94 27 0:54 / /home/me/private rw,nosuid - fuse.gocryptfs /home/me/cipher rw\n"
        "95 27 0:5 / /home/me/fuse.sshfs rw - tmpfs tmpfs rw\n";
    for (const char* device : {"0:51", "0:52", "0:53"}) {
        EXPECT_TRUE(ForeignUse::isSharedMount(mounts, device)) << device;
    }
    for (const char* device : {"0:21", "8:17", "0:54", "0:5", "0:99", ""}) {
        EXPECT_FALSE(ForeignUse::isSharedMount(mounts, device)) << device;
    }
}

TEST(SharedFileSystems, onlyThoseThatOtherComputersMayUseAreTold)
{
    constexpr qint64 kExt4 = 0xEF53;
    constexpr qint64 kTmpfs = 0x01021994;
    constexpr qint64 kHfsPlus = 0x482B;
    for (const qint64 local : {kExt4, kTmpfs, kHfsPlus}) {
        EXPECT_FALSE(ForeignUse::isShared(local)) << local;
    }
    constexpr qint64 kNfs = 0x6969;
    constexpr qint64 kSmb2 = 0xFE534D42;
    for (const qint64 shared : {kNfs, kSmb2, kSmb2 - 0x100000000}) {
        EXPECT_TRUE(ForeignUse::isShared(shared)) << shared;
    }
}
