#include "LibraryRestore.h"

#include "Backup.h"
#include "ChildProcess.h"
#include "DamagedLibrary.h"
#include "FlushRecorder.h"
#include "LibraryBackups.h"
#include "OrdinaryUser.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <sys/stat.h>

#include <csignal>
#include <optional>

using namespace Qt::StringLiterals;

/// A library with four photos, a backup of it with three, and restores that are cut off.
class LibraryRestoreTest : public DamagedLibrary
{
protected:
    void SetUp() override
    {
        DamagedLibrary::SetUp();
        const Result<LibraryBackup> made = LibraryBackups::make(package());
        ASSERT_TRUE(made.ok());
        m_backup = made.value();
        const auto library = open(Access::Write);
        import(*library, makePicture(u"Later.jpg"_s));
        ASSERT_TRUE(library->close().ok());
        m_files = pictureFiles();
        const QDir states(folder() + u"/state/corvane/libraries"_s);
        const QStringList names = states.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        ASSERT_EQ(names.size(), 1);
        m_state = states.filePath(names.first());
    }

    /// The databases of the backup are in place, and nothing has followed them.
    void cutOffAfterTheExchange() const
    {
        ASSERT_TRUE(LibraryRestore::stage(package(), m_state, m_backup.path).ok());
        const QString staged = package() + u"/.corvane-restore/Database"_s;
        ASSERT_TRUE(QDir().rename(package() + u"/Database"_s, package() + u"/aside"_s));
        ASSERT_TRUE(QDir().rename(staged, package() + u"/Database"_s));
        ASSERT_TRUE(QDir().rename(package() + u"/aside"_s, staged));
    }

    /// That the library opens, is of one of the two states and whole, and that the next run that
    /// writes leaves nothing of the restore.
    void expectEitherState() const
    {
        ASSERT_NE(open(Access::Read), nullptr);
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        ASSERT_TRUE(library->close().ok());
        EXPECT_FALSE(QFileInfo::exists(package() + u"/.corvane-restore"_s));
        EXPECT_FALSE(QFileInfo::exists(package() + u"/Database/.corvane-restore"_s));
        EXPECT_FALSE(QFileInfo::exists(m_state + u"/restore"_s));
        const qint64 photos = rows(u"RKMaster"_s);
        EXPECT_TRUE(photos == 4 || photos == 5) << photos;
        EXPECT_EQ(pictureFiles(), m_files);
        QStringList found = findings();
        found.removeIf([photos](const QString& finding) {
            return photos == 4 && finding.contains("belong"_L1);
        });
        EXPECT_EQ(found, QStringList());
    }

    /// The newest backup that knows another number of photos.
    [[nodiscard]] std::optional<LibraryBackup> lastOfOther(qint64 photos) const
    {
        const Result<QList<LibraryBackup>> all = LibraryBackups::list(package());
        EXPECT_TRUE(all.ok());
        std::optional<LibraryBackup> found;
        for (const LibraryBackup& backup : all.ok() ? all.value() : QList<LibraryBackup>()) {
            // The first copy ever is of the library without photos.
            if (backup.photos && *backup.photos > 0 && *backup.photos != photos) {
                found = backup;
            }
        }
        return found;
    }

    /// As a run leaves the journal that ended in the midst of a turn, which was to make the file.
    void noteTurn(qint64 number, const QString& made) const
    {
        QFile journal(m_state + u"/journal"_s);
        ASSERT_TRUE(journal.open(QIODevice::WriteOnly | QIODevice::Append));
        journal.write("{\"turn\":" + QByteArray::number(number) + ",\"made\":[\"" + made.toUtf8() +
                      "\"]}\n");
    }

    /// A restore that is cut off after the exchange, beside a turn from before it that made a photo
    /// which the backup does not know; returns the photo's file.
    [[nodiscard]] QString cutOffAfterATurn() const
    {
        QString later = fileIn(u"Masters"_s, u"Later.jpg"_s);
        noteTurn(7, later);
        cutOffAfterTheExchange();
        return later;
    }

    [[nodiscard]] QString mark() const { return package() + u"/Database/.corvane-restore"_s; }

    [[nodiscard]] bool isNoted() const { return QFileInfo::exists(m_state + u"/restore"_s); }

    [[nodiscard]] QByteArray journal() const
    {
        QFile file(m_state + u"/journal"_s);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    [[nodiscard]] bool isThere(const QString& relativePath) const
    {
        return QFileInfo::exists(package() + u'/' + relativePath);
    }

    LibraryBackup m_backup;
    QString m_state;
    QStringList m_files;
};

TEST_F(LibraryRestoreTest, cutOffWhileStagingTheLibraryIsAsItWas)
{
    ASSERT_TRUE(LibraryRestore::stage(package(), m_state, m_backup.path).ok());
    EXPECT_EQ(rows(u"RKMaster"_s), 5);
    EXPECT_TRUE(findings().join(u'\n').contains(".corvane-restore"_L1));
    expectEitherState();
    EXPECT_EQ(rows(u"RKMaster"_s), 5);
}

TEST_F(LibraryRestoreTest, cutOffAfterTheExchangeTheLibraryIsAsItIsToBe)
{
    cutOffAfterTheExchange();
    expectEitherState();
    EXPECT_EQ(rows(u"RKMaster"_s), 4);
}

TEST_F(LibraryRestoreTest, thatCataloguesLagIsNotForgottenUntilTheyFollow)
{
    cutOffAfterTheExchange();
    const OrdinaryUser user({folder()});
    {
        const WithPermissions closed(QFileInfo(m_backup.path).path(), 0555);
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        EXPECT_FALSE(library->close().ok()) << "without a copy nothing follows";
    }
    EXPECT_TRUE(QFileInfo::exists(m_state + u"/restore"_s));
    EXPECT_TRUE(QFileInfo::exists(package() + u"/Database/.corvane-restore"_s));
    expectEitherState();
}

TEST_F(LibraryRestoreTest, thatCataloguesLagIsAWarning)
{
    cutOffAfterTheExchange();
    const OrdinaryUser user({folder()});
    const WithPermissions closed(QFileInfo(m_backup.path).path(), 0555);
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const QString told = library->warnings().join(u'\n');
    EXPECT_TRUE(told.contains("follow at the next run"_L1)) << told.toStdString();
}

TEST_F(LibraryRestoreTest, aStagingThatFailsForgetsNoLagOfAnEarlierRestore)
{
    cutOffAfterTheExchange();
    EXPECT_TRUE(LibraryRestore::sweep(package(), m_state).ok());
    EXPECT_FALSE(LibraryRestore::stage(package(), m_state, folder() + u"/none"_s).ok());
    EXPECT_FALSE(QFileInfo::exists(package() + u"/.corvane-restore"_s));
    EXPECT_TRUE(QFileInfo::exists(m_state + u"/restore"_s));
    EXPECT_TRUE(QFileInfo::exists(package() + u"/Database/.corvane-restore"_s));
}

TEST_F(LibraryRestoreTest, aCatalogueTooLargeToBeOneIsMadeAnewInsteadOfPutBack)
{
    const QString catalogue = m_backup.path + u"/AlbumData.xml"_s;
    ASSERT_TRUE(QFile::resize(catalogue, qint64{100} * 1024 * 1024 * 1024));
    ASSERT_TRUE(LibraryRestore::stage(package(), m_state, m_backup.path).ok());
    const Result<QStringList> lagging = LibraryRestore::putInPlace(package(), m_backup.path);
    ASSERT_TRUE(lagging.ok());
    EXPECT_EQ(lagging.value(), QStringList());
}

TEST_F(LibraryRestoreTest, cutOffBeforeTheExchangeATurnOfAnEarlierCrashIsStillKnown)
{
    const QString half = u"Masters/half.jpg"_s;
    write(half, "half");
    noteTurn(7, half);
    ASSERT_TRUE(LibraryRestore::stage(package(), m_state, m_backup.path).ok());
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_FALSE(isThere(half));
}

TEST_F(LibraryRestoreTest, cutOffAfterTheExchangeTurnsFromBeforeItAreForgotten)
{
    const QString later = cutOffAfterATurn();
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_TRUE(isThere(later)) << "for the older databases it looks like half a turn";
    EXPECT_EQ(journal(), QByteArray());
}

TEST_F(LibraryRestoreTest, aMarkThatMayNotBeReadForgetsEveryTurn)
{
    const QString later = cutOffAfterATurn();
    const OrdinaryUser user({folder()});
    {
        const WithPermissions closed(mark(), 0000);
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        EXPECT_TRUE(library->close().ok());
        EXPECT_TRUE(isThere(later));
    }
    expectEitherState();
}

TEST_F(LibraryRestoreTest, theMarkIsInNoBackup)
{
    cutOffAfterTheExchange();
    const Result<LibraryBackup> made = LibraryBackups::make(package());
    ASSERT_TRUE(made.ok()) << made.error().message.toStdString();
    EXPECT_FALSE(QFileInfo::exists(made.value().path + u"/Database/.corvane-restore"_s));
}

TEST_F(LibraryRestoreTest, theNoteGoesOnlyWhenTheMarkIsGoneForGood)
{
    cutOffAfterTheExchange();
    ASSERT_TRUE(LibraryRestore::sweep(package(), m_state).ok());
    const QString databases = QFileInfo(package()).canonicalFilePath() + u"/Database"_s;
    bool mayFlush = false;
    int withoutMark = 0;
    FlushRecorder recorder;
    recorder.failWhere([&](const QString& path) {
        if (path != databases || isThere(u"Database/.corvane-restore"_s)) {
            return false;
        }
        ++withoutMark;
        EXPECT_TRUE(isNoted());
        return !mayFlush;
    });
    EXPECT_EQ(LibraryRestore::followed(package(), m_state), QStringList());
    EXPECT_EQ(withoutMark, 1);
    EXPECT_TRUE(isNoted());
    mayFlush = true;
    EXPECT_EQ(LibraryRestore::followed(package(), m_state), QStringList());
    EXPECT_EQ(withoutMark, 2);
    EXPECT_FALSE(isNoted());
}

TEST_F(LibraryRestoreTest, theNoteStaysBesideAMarkThatCannotBeRemovedAndThatIsTold)
{
    cutOffAfterTheExchange();
    ASSERT_TRUE(LibraryRestore::sweep(package(), m_state).ok());
    const OrdinaryUser user({folder()});
    {
        const WithPermissions closed(package() + u"/Database"_s, 0555);
        const QString told = LibraryRestore::followed(package(), m_state).join(u'\n');
        EXPECT_TRUE(told.contains(mark())) << told.toStdString();
    }
    EXPECT_TRUE(LibraryRestore::isInPlace(package(), m_state));
    expectEitherState();
}

TEST_F(LibraryRestoreTest, aMarkThatIsAPipeForgetsEveryTurn)
{
    const QString later = cutOffAfterATurn();
    ASSERT_TRUE(QFile::remove(mark()));
    ASSERT_EQ(::mkfifo(QFile::encodeName(mark()).constData(), 0600), 0);
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_TRUE(isThere(later));
}

TEST_F(LibraryRestoreTest, aMarkWithoutANumberForgetsEveryTurn)
{
    const QString later = cutOffAfterATurn();
    write(u"Database/.corvane-restore"_s, "");
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_TRUE(isThere(later));
}

TEST_F(LibraryRestoreTest, whatCannotBeRemovedIsAWarning)
{
    cutOffAfterTheExchange();
    const OrdinaryUser user({folder()});
    const WithPermissions closed(package() + u"/.corvane-restore/Database/apdb"_s, 0555);
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const QString told = library->warnings().join(u'\n');
    EXPECT_TRUE(told.contains(".corvane-restore/Database/apdb/Library.apdb"_L1))
        << told.toStdString();
}

TEST_F(LibraryRestoreTest, whatItCannotRemoveIsToldWithItsResult)
{
    const OrdinaryUser user({folder()});
    const WithPermissions closed(package() + u"/Database/apdb"_s, 0555);
    const auto restored = LibraryBackups::restore(package(), m_backup.name, false);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    const QString told = restored.value().lagging.join(u'\n');
    EXPECT_TRUE(told.contains(".corvane-restore/Database/apdb/Library.apdb"_L1))
        << told.toStdString();
    EXPECT_TRUE(QFile::setPermissions(package() + u"/.corvane-restore/Database/apdb"_s,
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        << "else it outlives the test";
}

TEST_F(LibraryRestoreTest, whatAnEarlierOneLeftAndCannotBeRemovedIsWhyThereIsNoOther)
{
    cutOffAfterTheExchange();
    const OrdinaryUser user({folder()});
    {
        const WithPermissions closed(package() + u"/.corvane-restore/Database/apdb"_s, 0555);
        const auto refused = LibraryBackups::restore(package(), m_backup.name, false);
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::NotWritable);
        const QString told = refused.error().message;
        EXPECT_TRUE(told.contains("make their folders writable"_L1)) << told.toStdString();
        EXPECT_TRUE(told.contains(".corvane-restore/Database/apdb/Library.apdb"_L1))
            << told.toStdString();
    }
    expectEitherState();
}

TEST_F(LibraryRestoreTest, whatCannotBeRemovedCostsNoCopyAtEachOpening)
{
    cutOffAfterTheExchange();
    const OrdinaryUser user({folder()});
    {
        const WithPermissions closed(package() + u"/.corvane-restore/Database/apdb"_s, 0555);
        ASSERT_TRUE(open(Access::Write)->close().ok());
        const QString backups = QFileInfo(m_backup.path).path();
        const QStringList copies = Backup::names(backups);
        ASSERT_TRUE(open(Access::Write)->close().ok());
        EXPECT_EQ(Backup::names(backups), copies);
    }
    expectEitherState();
}

TEST_F(LibraryRestoreTest, theDatabasesThatItPutsInPlaceAreFlushedOneByOne)
{
    const FlushRecorder recorder;
    ASSERT_TRUE(LibraryRestore::stage(package(), m_state, m_backup.path).ok());
    const QString staged =
        QFileInfo(package()).canonicalFilePath() + u"/.corvane-restore/Database/apdb"_s;
    const QStringList databases = QDir(staged).entryList(QDir::Files | QDir::Hidden);
    ASSERT_TRUE(databases.contains(u"Library.apdb"_s));
    for (const QString& name : databases) {
        EXPECT_TRUE(recorder.flushed().contains(staged + u'/' + name)) << name.toStdString();
    }
}

TEST_F(LibraryRestoreTest, cataloguesThatWereUnfinishedWhenItWasCutOffAreRemoved)
{
    const QStringList ours{u".AlbumData.xml.0abc123.corvane-new"_s,
                           u".Info.plist.0abc123.corvane-new"_s,
                           u"iLifeShared/.AlbumData2.xml.0abc123.corvane-new"_s,
                           u"iLifeShared/.ApertureDatabaseTimestamp.0abc123.corvane-new"_s};
    const QStringList others{u".picture.jpg.0abc123.corvane-new"_s,
                             u"iLifeShared/.picture.jpg.0abc123.corvane-new"_s};
    cutOffAfterTheExchange();
    for (const QString& file : ours + others) {
        write(file, "half");
    }
    ASSERT_TRUE(open(Access::Write)->close().ok());
    for (const QString& file : ours) {
        EXPECT_FALSE(isThere(file)) << file.toStdString();
    }
    for (const QString& file : others) {
        EXPECT_TRUE(isThere(file)) << file.toStdString();
    }
}

TEST_F(LibraryRestoreTest, cataloguesThatWereUnfinishedAreRemovedByAnotherRestoreToo)
{
    const QString ours = u".AlbumData.xml.0abc123.corvane-new"_s;
    cutOffAfterTheExchange();
    write(ours, "half");
    ASSERT_TRUE(LibraryBackups::restore(package(), m_backup.name, false).ok());
    EXPECT_FALSE(isThere(ours));
}

TEST_F(LibraryRestoreTest, aTurnAfterTheExchangeIsKnownThoughNothingHasFollowedYet)
{
    noteTurn(7, u"Masters/gone.jpg"_s);
    cutOffAfterTheExchange();
    const QString half = u"Masters/half.jpg"_s;
    write(half, "half");
    noteTurn(8, half);
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_FALSE(isThere(half));
}

TEST_F(LibraryRestoreTest, theJournalIsEmptiedOnlyWhenTheExchangeIsOnTheDisk)
{
    noteTurn(7, u"Masters/half.jpg"_s);
    const QByteArray before = journal();
    bool isOnDisk = false;
    FlushRecorder recorder;
    recorder.failWhere([&](const QString& path) {
        EXPECT_TRUE(isOnDisk || journal() == before) << path.toStdString();
        isOnDisk = isOnDisk || (path == QFileInfo(package()).canonicalFilePath() &&
                                isThere(u"Database/.corvane-restore"_s));
        return false;
    });
    ASSERT_TRUE(LibraryBackups::restore(package(), m_backup.name, false).ok());
    EXPECT_TRUE(isOnDisk);
    EXPECT_EQ(journal(), QByteArray());
}

TEST_F(LibraryRestoreTest, whileTheExchangeIsNotOnTheDiskNothingOfTheStateBeforeIsRemoved)
{
    noteTurn(7, u"Masters/half.jpg"_s);
    const QByteArray before = journal();
    {
        FlushRecorder recorder;
        recorder.failWhere([this](const QString& path) {
            return path == QFileInfo(package()).canonicalFilePath() &&
                   isThere(u"Database/.corvane-restore"_s);
        });
        ASSERT_TRUE(LibraryBackups::restore(package(), m_backup.name, false).ok());
    }
    EXPECT_TRUE(isThere(u".corvane-restore/Database/apdb/Library.apdb"_s));
    EXPECT_EQ(journal(), before);
    expectEitherState();
    EXPECT_EQ(rows(u"RKMaster"_s), 4);
}

TEST_F(LibraryRestoreTest, cutOffBetweenTwoRenamesTheNextOpeningMakesItGood)
{
    ASSERT_TRUE(LibraryRestore::stage(package(), m_state, m_backup.path).ok());
    ASSERT_TRUE(QDir().rename(package() + u"/Database"_s,
                              package() + u"/.corvane-restore/Database.before"_s));
    ASSERT_NE(open(Access::Read), nullptr);
    EXPECT_EQ(rows(u"RKMaster"_s), 4);
    expectEitherState();
}

TEST_F(LibraryRestoreTest, withoutItsNoteNothingIsSwept)
{
    ASSERT_TRUE(LibraryRestore::stage(package(), m_state, m_backup.path).ok());
    ASSERT_TRUE(QFile::remove(m_state + u"/restore"_s));
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_TRUE(QFileInfo::exists(package() + u"/.corvane-restore/Database"_s));
}

TEST_F(LibraryRestoreTest, aKillAtAnyMomentLeavesEitherState)
{
    constexpr int kUsual = 400; // milliseconds that a restore takes at most on a machine at rest
    constexpr int kPatience = 20000;
    int restored = 0;
    for (int milliseconds = 0; milliseconds <= (restored > 0 ? kUsual : kPatience);
         milliseconds += milliseconds < kUsual ? 25 : milliseconds) {
        const qint64 photos = rows(u"RKVersion WHERE showInLibrary=1 AND isInTrash=0"_s);
        const std::optional<LibraryBackup> other = lastOfOther(photos);
        if (!other) {
            break; // copies of one state have taken the place of those of the other
        }
        {
            ChildProcess child([this, &other](ChildProcess&) {
                static_cast<void>(LibraryBackups::restore(package(), other->name, false));
                ChildProcess::crash();
            });
            QThread::msleep(static_cast<unsigned long>(milliseconds));
            ::kill(child.id(), SIGKILL);
        }
        expectEitherState();
        const bool isOther = rows(u"RKVersion WHERE showInLibrary=1 AND isInTrash=0"_s) != photos;
        restored += isOther ? 1 : 0;
        EXPECT_TRUE(!isOther || lastOfOther(other->photos.value_or(0)))
            << "the state before was not backed up";
    }
    EXPECT_GT(restored, 0) << "no round came to the exchange";
}
