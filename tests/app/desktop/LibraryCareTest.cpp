#include "LibraryCare.h"

#include "LibraryCopyFixture.h"
#include "LibrarySession.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <SQLiteCpp/Database.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace
{

using Unclosed = LibraryCare::Unclosed;

class LibraryCareTest : public LibraryCopyFixture
{
protected:
    void SetUp() override
    {
        LibraryCopyFixture::SetUp();
        LibraryCare& care = m_session.care();
        QObject::connect(&care, &LibraryCare::verified, [this](const auto& verification) {
            m_verification = verification;
        });
        QObject::connect(
            &care, &LibraryCare::repaired, [this](const auto& report) { m_report = report; });
        QObject::connect(
            &care, &LibraryCare::backedUp, [this](const auto& backup) { m_backup = backup; });
        QObject::connect(
            &care, &LibraryCare::listed, [this](const auto& backups, const auto& warnings) {
                m_backups = backups;
                m_warnings = warnings;
            });
        QObject::connect(
            &care, &LibraryCare::restored, [this](const auto& restored) { m_restored = restored; });
        QObject::connect(
            &care, &LibraryCare::failed, [this](const Error& error) { m_failures += error; });
    }

    [[nodiscard]] bool settle()
    {
        return waitUntil([this] { return !m_session.isBusy(); });
    }

    void open()
    {
        m_session.open(library());
        ASSERT_TRUE(settle());
        ASSERT_TRUE(m_session.isOpen());
    }

    /// Behind the library's back.
    void execute(const char* sql) const
    {
        SQLite::Database database((library() + u"/Database/apdb/Library.apdb"_s).toStdString(),
                                  SQLite::OPEN_READWRITE);
        static_cast<void>(database.exec(sql));
    }

    [[nodiscard]] QString brief() const { return library() + u"/iLifeShared/AlbumData2.xml"_s; }

    /// A copy of the library as it is now.
    [[nodiscard]] LibraryBackup backUpNow()
    {
        m_session.care().backUp();
        EXPECT_TRUE(settle());
        EXPECT_TRUE(m_backup.has_value());
        return m_backup.value_or(LibraryBackup());
    }

    /// As a scan does, on a thread of its own; answers why it was refused, if it was.
    QString makeAlbum(const QString& name)
    {
        QString refused;
        runAsScan([this, &name, &refused] {
            try {
                m_session.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s)
                    ->newAlbumName(name);
            } catch (const ScriptingException& exception) {
                refused = exception.reason();
            }
        });
        return refused;
    }

    LibrarySession m_session;
    std::optional<LibraryCare::Verification> m_verification;
    std::optional<RepairReport> m_report;
    std::optional<LibraryBackup> m_backup;
    std::optional<QList<LibraryBackup>> m_backups;
    QStringList m_warnings; ///< told with m_backups
    std::optional<LibraryBackups::Restored> m_restored;
    QList<Error> m_failures;
};

} // namespace

TEST_F(LibraryCareTest, ofASoundLibraryNothingIsFound)
{
    open();
    QList<LibraryCare::Work> works;
    QObject::connect(&m_session.care(), &LibraryCare::workChanged, [&] {
        works.append(m_session.care().work());
    });
    m_session.care().verify();
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_verification.has_value());
    EXPECT_TRUE(m_verification->findings.isEmpty());
    EXPECT_EQ(works, (QList{LibraryCare::Work::Verify, LibraryCare::Work::None}));
}

TEST_F(LibraryCareTest, theStagesOfAVerificationAreToldInTheirOrder)
{
    using enum CareProgress::Stage;
    open();
    QList<CareProgress::Stage> stages;
    QObject::connect(
        &m_session.care(), &LibraryCare::progressed, [&stages](const CareProgress& progress) {
            if (stages.isEmpty() || stages.last() != progress.stage) {
                stages.append(progress.stage);
            }
        });
    m_session.care().verify();
    ASSERT_TRUE(settle());
    EXPECT_EQ(stages, (QList{Databases, Sidecars, Catalogues, Files}));
}

TEST_F(LibraryCareTest, whatIsFoundIsMendedAfterABackupInTheFolderThatWasTold)
{
    open();
    ASSERT_TRUE(QFile::remove(brief()));
    m_session.care().verify();
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_verification.has_value());
    ASSERT_EQ(m_verification->findings.size(), 1);
    EXPECT_FALSE(QFileInfo::exists(brief())) << "nothing is changed by it";
    m_session.care().repair(Unclosed::Refuse);
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_report.has_value());
    EXPECT_EQ(m_report->mended, m_verification->findings);
    EXPECT_TRUE(QFileInfo::exists(brief()));
    EXPECT_EQ(QFileInfo(m_report->backup).path(), m_verification->backupsFolder);
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(LibraryCareTest, aVerificationThatIsStoppedFindsNothing)
{
    open();
    m_session.care().verify();
    m_session.care().stop();
    ASSERT_TRUE(settle());
    EXPECT_FALSE(m_verification.has_value());
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_failures.first().code, ErrorCode::Interrupted);
    m_session.care().verify();
    ASSERT_TRUE(settle());
    EXPECT_TRUE(m_verification.has_value()) << "only that one was stopped";
}

TEST_F(LibraryCareTest, theEndOfTheProgramStopsARepair)
{
    open();
    ASSERT_TRUE(QFile::remove(brief()));
    m_session.care().repair(Unclosed::Refuse);
    m_session.requestStop();
    ASSERT_TRUE(settle());
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_failures.first().code, ErrorCode::Interrupted);
    EXPECT_FALSE(QFileInfo::exists(brief()));
}

TEST_F(LibraryCareTest, rowsThatKeepALibraryFromBeingWrittenToAreMendedAndItIsOpenedForWriting)
{
    execute("DELETE FROM RKMaster_RidIndexes");
    open();
    ASSERT_FALSE(m_session.contents().isWritable());
    m_session.care().repair(Unclosed::Refuse);
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_report.has_value());
    EXPECT_FALSE(m_report->mended.isEmpty());
    EXPECT_TRUE(m_report->left.isEmpty());
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(LibraryCareTest, anErrorAfterTheRowsWereMendedIsReportedWithThemAndTheBackup)
{
    execute("DELETE FROM RKMaster_RidIndexes");
    ASSERT_TRUE(QFile::remove(library() + u"/AlbumData.xml"_s));
    ASSERT_TRUE(QFile::remove(brief()) && QDir().mkdir(brief()));
    open();
    m_session.care().repair(Unclosed::Refuse);
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_report.has_value()) << m_failures.value(0).message.toStdString();
    EXPECT_TRUE(QFileInfo::exists(m_report->backup));
    EXPECT_FALSE(m_report->mended.isEmpty());
    EXPECT_EQ(m_report->failures.size(), 1) << "once, though closing fails as well";
}

TEST_F(LibraryCareTest, aLibraryThatWasNotClosedIsRepairedOnlyWhenThatIsAccepted)
{
    execute("DELETE FROM RKMaster_RidIndexes");
    execute("UPDATE RKAdminData SET propertyValue='0' WHERE propertyName='closedClean'");
    open();
    m_session.care().repair(Unclosed::Refuse);
    ASSERT_TRUE(settle());
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_failures.first().code, ErrorCode::NotClosed);
    m_session.care().repair(Unclosed::Accept);
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_report.has_value());
    EXPECT_TRUE(m_report->left.isEmpty());
}

TEST_F(LibraryCareTest, aBackupIsMadeOfALibraryThatIsOpenForWritingOrForReading)
{
    open();
    ASSERT_TRUE(m_session.contents().isWritable());
    const LibraryBackup first = backUpNow();
    EXPECT_EQ(first.photos, 5);
    EXPECT_TRUE(m_session.contents().isWritable());
    m_session.open(library());
    m_session.stopChecking();
    ASSERT_TRUE(settle());
    ASSERT_FALSE(m_session.contents().isWritable());
    const LibraryBackup second = backUpNow();
    EXPECT_NE(second.name, first.name);
    m_session.care().list(library());
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_backups.has_value());
    ASSERT_GE(m_backups->size(), 2);
    EXPECT_EQ(m_backups->last().name, second.name);
}

TEST_F(LibraryCareTest, aRestoredLibraryIsShownAndOpenForWriting)
{
    open();
    const LibraryBackup backup = backUpNow();
    ASSERT_EQ(makeAlbum(u"Later"_s), QString());
    m_session.reload();
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_session.contents().albums.contains(u"Later"_s));
    m_session.care().restore(library(), backup.name, Unclosed::Refuse);
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_restored.has_value()) << m_failures.value(0).message.toStdString();
    EXPECT_EQ(m_restored->from.name, backup.name);
    EXPECT_TRUE(QFileInfo::exists(m_restored->before));
    EXPECT_FALSE(m_session.contents().albums.contains(u"Later"_s));
    EXPECT_EQ(m_session.contents().photos.size(), 5);
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(LibraryCareTest, aLibraryThatCannotEvenBeReadIsRestoredAndOpened)
{
    open();
    const LibraryBackup backup = backUpNow();
    QFile database(library() + u"/Database/apdb/Library.apdb"_s);
    ASSERT_TRUE(database.open(QIODevice::ReadWrite));
    database.write(QByteArray(4096, 'x'));
    database.close();
    m_session.open(library());
    ASSERT_TRUE(settle());
    ASSERT_FALSE(m_session.isOpen());
    m_session.care().list(library());
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_backups.has_value());
    m_session.care().restore(library(), backup.name, Unclosed::Refuse);
    ASSERT_TRUE(settle());
    ASSERT_TRUE(m_restored.has_value()) << m_failures.value(0).message.toStdString();
    EXPECT_TRUE(m_session.isOpen());
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(LibraryCareTest, whatAnotherProgramChangedInTheOpenLibraryIsToldBeforeARestore)
{
    const QString words = u"were changed while it is open here"_s;
    open();
    ASSERT_EQ(makeAlbum(u"Made by a scan"_s), QString());
    m_session.synchronise();
    m_session.care().list(library());
    ASSERT_TRUE(settle());
    EXPECT_EQ(m_warnings.filter(words), QStringList()) << "this program's own change";
    execute("UPDATE RKVersion SET mainRating=2");
    m_session.care().list(library());
    ASSERT_TRUE(settle());
    EXPECT_EQ(m_warnings.filter(words).size(), 1);
    m_session.synchronise();
    m_session.care().list(library());
    ASSERT_TRUE(settle());
    EXPECT_EQ(m_warnings.filter(words).size(), 1) << "also after this program looked at it";
}

TEST_F(LibraryCareTest, aRestoreThatFailsLeavesTheLibraryOpenForWriting)
{
    open();
    m_session.care().restore(library(), u"19990101-000000-000"_s, Unclosed::Refuse);
    ASSERT_TRUE(settle());
    EXPECT_FALSE(m_restored.has_value());
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_TRUE(m_failures.first().message.contains(library()));
    EXPECT_TRUE(m_session.contents().isWritable());
    EXPECT_EQ(m_session.contents().photos.size(), 5);
}

TEST_F(LibraryCareTest, aScanThatIsAskedForDuringARestoreWaitsForItAndMayWrite)
{
    open();
    const LibraryBackup backup = backUpNow();
    m_session.care().restore(library(), backup.name, Unclosed::Refuse);
    EXPECT_EQ(makeAlbum(u"Made by the scan"_s), QString());
    ASSERT_TRUE(settle());
    m_session.reload();
    ASSERT_TRUE(settle());
    EXPECT_TRUE(m_session.contents().albums.contains(u"Made by the scan"_s));
}
