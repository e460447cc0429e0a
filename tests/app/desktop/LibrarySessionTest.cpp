#include "LibrarySession.h"

#include "Connection.h"
#include "LibraryCopyFixture.h"
#include "Queries.h"

#include <QDateTime>
#include <QDirIterator>
#include <QFile>
#include <QStringList>

#include <thread>

using namespace Qt::StringLiterals;

namespace
{

class LibrarySessionTest : public LibraryCopyFixture
{
protected:
    void SetUp() override
    {
        LibraryCopyFixture::SetUp();
        const auto tell = [this](const QString& what) {
            m_told.append(what + (m_session.contents().checking ? u" checking"_s : QString()));
        };
        QObject::connect(
            &m_session, &LibrarySession::shown, &m_session, [tell] { tell(u"shown"_s); });
        QObject::connect(
            &m_session, &LibrarySession::opened, &m_session, [tell] { tell(u"opened"_s); });
        QObject::connect(
            &m_session, &LibrarySession::failed, &m_session, [tell] { tell(u"failed"_s); });
    }

    void openAndWait()
    {
        m_session.open(library());
        ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    }

    [[nodiscard]] PhotoApplicationPtr application()
    {
        return m_session.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s);
    }

    LibrarySession m_session;
    QStringList m_told; ///< what the session said, in order
};

} // namespace

TEST_F(LibrarySessionTest, thePhotosAreShownBeforeTheCheckAndOpenForWritingAfterIt)
{
    QList<qsizetype> photosWhenShown;
    QObject::connect(&m_session, &LibrarySession::shown, &m_session, [&] {
        photosWhenShown.append(m_session.contents().photos.size());
        EXPECT_FALSE(m_session.contents().isWritable());
    });
    openAndWait();
    EXPECT_EQ(m_told, (QStringList{u"shown checking"_s, u"opened"_s}));
    EXPECT_EQ(photosWhenShown, QList<qsizetype>{5});
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(LibrarySessionTest, aLibraryThatNobodyChangesIsReadOnce)
{
    // What was changed a moment ago is told once the library can be written to.
    QDirIterator databases(library() + "/Database/apdb"_L1, QDir::Files);
    while (databases.hasNext()) {
        QFile database(databases.next());
        ASSERT_TRUE(database.open(QIODevice::ReadWrite));
        ASSERT_TRUE(database.setFileTime(QDateTime::currentDateTimeUtc().addSecs(-3600),
                                         QFileDevice::FileModificationTime));
    }
    int changes = 0;
    QObject::connect(
        &m_session, &LibrarySession::contentsChanged, &m_session, [&changes] { ++changes; });
    openAndWait();
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(LibrarySessionTest, whatAnotherProgramChangesBeforeTheCheckIsShownAfterIt)
{
    // With its place taken, the check waits for the other program, which commits in time.
    const auto other = Connection::open(library(), Connection::Mode::Write);
    ASSERT_TRUE(other.ok());
    other.value()->beginImmediate();
    Sql::execute(*other.value(), "UPDATE RKVersion SET name = 'Changed' WHERE showInLibrary = 1");
    QObject::connect(&m_session, &LibrarySession::shown, &m_session, [&] {
        EXPECT_NE(m_session.contents().photos.first().name, u"Changed"_s);
        other.value()->commit();
    });
    openAndWait();
    EXPECT_EQ(m_session.contents().photos.first().name, u"Changed"_s);
    EXPECT_TRUE(m_session.contents().isWritable())
        << m_session.contents().whyReadOnly.toStdString();
}

TEST_F(LibrarySessionTest, aScanThatStartsDuringTheOpeningWaitsAndMayWrite)
{
    const PhotoApplicationPtr found = application(); // as an engine does, on the main thread
    m_session.open(library());
    bool runs = false;
    QString refused;
    runAsScan([&] {
        runs = found->isRunning();
        try {
            found->newAlbumName(u"Made by the scan"_s); // a library open for reading raises
        } catch (const ScriptingException& exception) {
            refused = exception.reason();
        }
    });
    EXPECT_TRUE(runs);
    EXPECT_EQ(refused, QString());
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    m_session.reload();
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_TRUE(m_session.contents().albums.contains(u"Made by the scan"_s));
}

TEST_F(LibrarySessionTest, theMainThreadDoesNotWaitForAnOpening)
{
    m_session.open(library());
    EXPECT_FALSE(application()->isRunning()) << "its photos are not there yet";
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_TRUE(application()->isRunning());
}

TEST_F(LibrarySessionTest, whatIsSelectedDuringTheCheckIsTheApplicationsSelectionAfterIt)
{
    QObject::connect(&m_session, &LibrarySession::shown, &m_session, [this] {
        m_session.setSelection({m_session.contents().photos.at(1).id});
    });
    openAndWait();
    const QList<ScriptingObjectPtr> selected = application()->selection();
    ASSERT_EQ(selected.size(), 1);
    EXPECT_EQ(selected.first()->id(), m_session.contents().photos.at(1).id);
}

TEST_F(LibrarySessionTest, theApplicationsSelectionIsTheScansWhileItIsHeldAndThePersonsAfterwards)
{
    openAndWait();
    const qint64 first = m_session.contents().photos.at(0).id;
    const qint64 second = m_session.contents().photos.at(1).id;
    const auto selected = [this] { return application()->selection().value(0)->id(); };
    m_session.setSelection({first});
    m_session.holdSelection(true);
    m_session.setSelection({second});
    EXPECT_EQ(selected(), first);
    m_session.holdSelection(false);
    EXPECT_EQ(selected(), second);
}

TEST_F(LibrarySessionTest, whatIsSelectedWhileAScanWaitsForTheCheckIsNotWhatItScans)
{
    qint64 first = 0;
    qint64 second = 0;
    QObject::connect(&m_session, &LibrarySession::shown, &m_session, [&] {
        first = m_session.contents().photos.at(0).id;
        second = m_session.contents().photos.at(1).id;
        m_session.setSelection({first});
        m_session.holdSelection(true);
        m_session.setSelection({second});
    });
    openAndWait();
    EXPECT_EQ(application()->selection().value(0)->id(), first);
    m_session.holdSelection(false);
    EXPECT_EQ(application()->selection().value(0)->id(), second);
}

TEST_F(LibrarySessionTest, aSelectionAmongThePhotosOfTheFormerLibraryIsNoneInTheNewOne)
{
    const QString other = m_folder.filePath(u"Other.photolibrary"_s);
    copyLibrary(library(), other);
    openAndWait();
    m_session.setSelection({m_session.contents().photos.at(0).id});
    m_session.open(other);
    // Until events are served, the former library's photos are what is seen.
    std::thread([this] { EXPECT_TRUE(application()->isRunning()); }).join();
    ASSERT_EQ(m_session.contents().path, library());
    EXPECT_TRUE(application()->selection().isEmpty());
    m_session.setSelection({m_session.contents().photos.at(1).id});
    EXPECT_TRUE(application()->selection().isEmpty());
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_TRUE(application()->selection().isEmpty());
    EXPECT_TRUE(m_session.selection().isEmpty());
}

TEST_F(LibrarySessionTest, aCheckThatIsStoppedLeavesTheLibraryOpenForReading)
{
    m_session.open(library());
    m_session.stopChecking();
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_EQ(m_told, (QStringList{u"shown checking"_s, u"opened"_s}));
    EXPECT_FALSE(m_session.contents().isWritable());
    EXPECT_EQ(m_session.contents().photos.size(), 5);
}

TEST_F(LibrarySessionTest, aLibraryOpenedAfterAStoppedCheckIsCheckedAnew)
{
    m_session.open(library());
    m_session.stopChecking();
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    openAndWait();
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(LibrarySessionTest, importsAreRefusedOnceStopHasBeenAskedFor)
{
    openAndWait();
    m_session.requestStop();
    QString refused;
    runAsScan([&] {
        try {
            application()->photoLibraryAlbum()->importFrom(u"/nowhere.jpg"_s, true, nullptr);
        } catch (const ScriptingException& exception) {
            refused = exception.name();
        }
    });
    EXPECT_EQ(refused, u"Interrupted"_s);
}

TEST_F(LibrarySessionTest, aLibraryThatCanNoLongerBeReadIsClosedWhenItIsOpenedAgain)
{
    openAndWait();
    QFile database(library() + u"/Database/apdb/Library.apdb"_s);
    ASSERT_TRUE(database.open(QIODevice::ReadWrite));
    database.write(QByteArray(4096, 'x'));
    database.close();
    m_told.clear();
    QObject::connect(&m_session, &LibrarySession::contentsChanged, &m_session, [this] {
        m_told.append(u"%1 photos"_s.arg(m_session.contents().photos.size()));
    });
    openAndWait();
    EXPECT_EQ(m_told, (QStringList{u"0 photos"_s, u"failed"_s}));
    EXPECT_FALSE(m_session.isOpen());
}

TEST_F(LibrarySessionTest, twoOpeningsOneAfterTheOtherEndWithTheSecondLibrary)
{
    const QString other = m_folder.filePath(u"Other.photolibrary"_s);
    copyLibrary(library(), other);
    m_session.open(library());
    m_session.open(other);
    bool runs = false;
    runAsScan([&] { runs = application()->isRunning(); });
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_TRUE(runs);
    EXPECT_EQ(m_session.contents().path, other);
    EXPECT_TRUE(m_session.contents().isWritable());
    EXPECT_TRUE(PhotoLibrary::open(library(), {.access = Access::Write}).ok())
        << "the first one's lock was given up";
}
