#include "Connection.h"
#include "FlushRecorder.h"
#include "Queries.h"
#include "Scripting.h"
#include "WritableLibrary.h"
#include "WriteAccess.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

/// A commit over several databases happens when their super-journal is gone; where the folder
/// cannot be flushed after that, SQLite tells an error all the same.
class DoubtfulCommit : public WritableLibrary
{
protected:
    void importAndTrash(PhotoLibrary& library) const
    {
        import(library, makePicture(u"IMG_1.JPG"_s));
        const PhotoPtr photo = lastImported(library);
        ASSERT_NE(photo, nullptr);
        photo->removeFrom(application(library)->photoLibraryAlbum());
    }

    /// The first flush of the databases' folder after the commit's super-journal went fails.
    void failAfterCommit(FlushRecorder& recorder) const
    {
        const QDir databases(package() + u"/Database/apdb"_s);
        recorder.failWhere([databases, committing = false](const QString& path) mutable {
            if (path != databases.canonicalPath()) {
                return false;
            }
            const bool wasCommitting = committing;
            committing = !databases.entryList({u"*-mj*"_s}, QDir::Files).isEmpty();
            return wasCommitting && !committing;
        });
    }
};

TEST_F(DoubtfulCommit, aTurnThatHappenedThoughItsLastFlushFailedIsFollowedAndKeepsItsFiles)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    {
        FlushRecorder recorder;
        failAfterCommit(recorder);
        const auto turn = library->beginPhotoTurn();
        import(*library, makePicture(u"IMG_1.JPG"_s));
        EXPECT_THROW(turn->commit(), ScriptingException);
    }
    ASSERT_EQ(rows(u"RKMaster"_s), 1);
    ASSERT_TRUE(library->close().ok());
    EXPECT_EQ(pictureFiles().size(), 3);
    EXPECT_EQ(versionSidecars().size(), 3);
    expectSound();
}

TEST_F(DoubtfulCommit, ofATurnThatHappenedTheErrorSaysSo)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    FlushRecorder recorder;
    failAfterCommit(recorder);
    const auto turn = library->beginPhotoTurn();
    import(*library, makePicture(u"IMG_1.JPG"_s));
    QString told;
    try {
        turn->commit();
    } catch (const ScriptingException& exception) {
        told = exception.reason();
    }
    EXPECT_TRUE(told.endsWith(
        "All the same this was done: the picture is in the library, and so is all that belongs "
        "to its turn."_L1))
        << told.toStdString();
}

TEST_F(DoubtfulCommit, ofATurnThatWasUndoneTheErrorSaysNothingMore)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const auto turn = library->beginPhotoTurn();
    import(*library, makePicture(u"IMG_1.JPG"_s));
    FlushRecorder recorder;
    recorder.failWhere([](const QString& path) { return path.endsWith("-journal"_L1); });
    QString told;
    try {
        turn->commit();
    } catch (const ScriptingException& exception) {
        told = exception.reason();
    }
    EXPECT_FALSE(told.isEmpty());
    EXPECT_FALSE(told.contains("All the same"_L1)) << told.toStdString();
    EXPECT_EQ(rows(u"RKMaster"_s), 0);
}

TEST_F(DoubtfulCommit, whatAReaderKeptFromBeingCommittedIsToldAsUndone)
{
    const auto reading = Connection::open(package(), Connection::Mode::Write, 0);
    const auto writing = Connection::open(package(), Connection::Mode::Write, 0);
    ASSERT_TRUE(reading.ok() && writing.ok() && QDir(folder()).mkpath(u"turns"_s));
    const auto access = WriteAccess::open(
        {package(), folder() + u"/turns"_s, folder() + u"/copies"_s}, nullptr, {});
    ASSERT_TRUE(access.ok());
    const auto transaction = access.value()->begin(*writing.value());
    ASSERT_TRUE(transaction.ok());
    Sql::execute(*writing.value(), "UPDATE RKAdminData SET propertyValue = 'changed'");
    const Connection::Snapshot snapshot(*reading.value());
    const Result<void> committed = transaction.value()->commit();
    ASSERT_FALSE(committed.ok());
    EXPECT_EQ(committed.error().code, ErrorCode::InUse);
    EXPECT_FALSE(committed.error().message.contains("Whether it was done"_L1))
        << committed.error().message.toStdString();
    EXPECT_EQ(Sql::firstInteger(*reading.value(),
                                "SELECT count(*) FROM RKAdminData WHERE propertyValue = 'changed'"),
              0);
}

TEST_F(DoubtfulCommit, aDeletionThatHappenedThoughItsLastFlushFailedIsFinishedByTheNextOpening)
{
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        ASSERT_NO_FATAL_FAILURE(importAndTrash(*library));
        FlushRecorder recorder;
        failAfterCommit(recorder);
        const Result<EmptiedTrash> emptied = library->emptyTrash();
        ASSERT_FALSE(emptied.ok());
        EXPECT_TRUE(emptied.error().message.contains("Whether it was done all the same shows"_L1))
            << emptied.error().message.toStdString();
        EXPECT_TRUE(library->close().ok());
    }
    ASSERT_EQ(rows(u"RKMaster"_s), 0);
    const auto again = open(Access::Write);
    ASSERT_NE(again, nullptr);
    EXPECT_TRUE(again->close().ok());
    EXPECT_EQ(pictureFiles(), QStringList());
    expectSound();
}

TEST_F(DoubtfulCommit, ofPhotosThatAreGoneTheErrorSaysSoThoughItCouldNotBeNoted)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    ASSERT_NO_FATAL_FAILURE(importAndTrash(*library));
    FlushRecorder recorder;
    recorder.failWhere([this](const QString& path) {
        return path.endsWith("/journal"_L1) && pictureFiles().isEmpty();
    });
    const Result<EmptiedTrash> emptied = library->emptyTrash();
    ASSERT_FALSE(emptied.ok());
    EXPECT_TRUE(emptied.error().message.startsWith(
        u"1 photo was deleted from the library \"%1\" for good and "_s.arg(package())))
        << emptied.error().message.toStdString();
    EXPECT_TRUE(
        emptied.error().message.contains(" are free again, but that could not be noted. "_L1));
}
