#include "LibraryWindowFixture.h"
#include "Mnemonics.h"
#include "OrdinaryUser.h"
#include "PhotoTexts.h"
#include "WholeTexts.h"

#include <QAction>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTextBrowser>
#include <QUrl>

#include <SQLiteCpp/Database.h>

using namespace Qt::StringLiterals;

namespace
{

class LibraryWindowTest : public LibraryWindowFixture
{
protected:
    /// As iPhoto leaves a library that it could not close.
    void leaveOpen() const
    {
        const QString path = library() + u"/Database/apdb/Library.apdb"_s;
        SQLite::Database database(path.toStdString(), SQLite::OPEN_READWRITE);
        ASSERT_EQ(database.exec("UPDATE RKAdminData SET propertyValue='0' "
                                "WHERE propertyName='closedClean'"),
                  1);
    }

    /// Whether the window takes what is dragged onto it and dropped.
    bool isDropTaken(const QString& path)
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.setAccepted(false);
        QApplication::sendEvent(&m_window, &enter);
        QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        drop.setAccepted(false);
        QApplication::sendEvent(&m_window, &drop);
        EXPECT_EQ(enter.isAccepted(), drop.isAccepted());
        return drop.isAccepted();
    }

    QLabel& why() { return part<QLabel>(u"whyReadOnly"_s); }
};

} // namespace

TEST_F(LibraryWindowTest, aLibraryThatWasNotClosedIsOpenedForWritingWhenTheBannerIsToldTo)
{
    leaveOpen();
    open(library());
    ASSERT_FALSE(m_session.contents().isWritable());
    EXPECT_TRUE(why().isVisible());
    auto& button = part<QPushButton>(u"openAfterCrash"_s);
    ASSERT_TRUE(button.isVisible());
    ASSERT_TRUE(button.isEnabled());
    QTest::mouseClick(&button, Qt::LeftButton);
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_TRUE(m_session.contents().isWritable());
    EXPECT_FALSE(button.isVisible()) << "it has been done";
}

TEST_F(LibraryWindowTest, aLibraryThatMayNotBeWrittenToIsSeenAndSaysWhy)
{
    const OrdinaryUser user({m_folder.path()});
    const WithPermissions closed(library() + u"/Database/apdb/Library.apdb"_s, 0400);
    open(library());
    EXPECT_EQ(grid().model()->rowCount(), 5);
    EXPECT_FALSE(m_session.contents().isWritable());
    EXPECT_TRUE(why().isVisible());
    EXPECT_TRUE(why().text().contains(library())) << why().text().toStdString();
    EXPECT_FALSE(part<QPushButton>(u"openAfterCrash"_s).isVisible()) << "that would not help";
}

TEST_F(LibraryWindowTest, theLineAboutAChangeByAnotherProgramGoesOnceTheChangeIsAMinuteOld)
{
    const QDir databases(library() + u"/Database/apdb"_s);
    const QStringList files = databases.entryList(QDir::Files);
    for (const QString& name : files) {
        QFile file(databases.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) &&
                    file.setFileTime(QDateTime::currentDateTimeUtc().addSecs(-50),
                                     QFileDevice::FileModificationTime));
    }
    open(library());
    EXPECT_TRUE(why().isVisible());
    EXPECT_TRUE(why().text().contains(u"within the last minute"_s)) << why().text().toStdString();
    EXPECT_TRUE(waitUntil([this] { return !why().isVisible(); }));
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(LibraryWindowTest, noTwoControlsShareAMnemonicOnAnyPage)
{
    QStringList welcome = mnemonicsOf(m_window);
    EXPECT_TRUE(welcome.contains(u"o"_s)) << "the welcome page";
    EXPECT_EQ(welcome.removeDuplicates(), 0) << welcome.join(u' ').toStdString();
    leaveOpen();
    open(library());
    QStringList photos = mnemonicsOf(m_window);
    EXPECT_TRUE(photos.contains(u"c"_s)) << "the banner";
    EXPECT_EQ(photos.removeDuplicates(), 0) << photos.join(u' ').toStdString();
}

TEST_F(LibraryWindowTest, nothingIsCutOffInASmallWindow)
{
    leaveOpen();
    open(library());
    m_window.resize(900, 600);
    QApplication::processEvents();
    EXPECT_EQ(m_window.size(), QSize(900, 600));
    expectNothingIsCutOff(m_window);
    EXPECT_TRUE(why().isVisible());
}

TEST_F(LibraryWindowTest, theInspectorIsToggledAndTellsOfWhatIsSelected)
{
    open(library());
    auto& dock = part<QDockWidget>(u"inspectorDock"_s);
    EXPECT_FALSE(dock.isVisible());
    QTest::keyClick(&m_window, Qt::Key_I, Qt::ControlModifier | Qt::AltModifier);
    ASSERT_TRUE(dock.isVisible());
    grid().selectPhotos({m_session.contents().photos.at(0).id});
    const QString name = m_session.contents().photos.at(0).fileName;
    EXPECT_TRUE(waitUntil(
        [this, &name] { return part<QTextBrowser>(u"inspector"_s).toPlainText().contains(name); }));
    QTest::keyClick(&m_window, Qt::Key_I, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_FALSE(dock.isVisible());
}

TEST_F(LibraryWindowTest, theStatusLineTellsNumberAndSizeOfWhatIsSelected)
{
    open(library());
    EXPECT_TRUE(waitUntil([this] { return figures().startsWith(u"Selected: 0 of 5, "_s); }));
    const PhotoFacts& first = m_session.contents().photos.at(0);
    const PhotoFacts& second = m_session.contents().photos.at(1);
    grid().selectPhotos({first.id, second.id});
    const QString wanted =
        u"Selected: 2 of 5, %1"_s.arg(PhotoTexts::size(first.bytes + second.bytes));
    EXPECT_TRUE(waitUntil([this, &wanted] { return figures() == wanted; }))
        << figures().toStdString();
}

TEST_F(LibraryWindowTest, aReloadShowsWhatBecameOfThePhotosMeanwhile)
{
    open(library());
    const PhotoFacts& photo = m_session.contents().photos.at(0);
    ASSERT_FALSE(photo.missing);
    ASSERT_TRUE(QFile::remove(photo.originalPath));
    m_window.actions().reload->trigger();
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_TRUE(m_session.contents().photos.at(0).missing);
    EXPECT_EQ(names().size(), 5);
}

TEST_F(LibraryWindowTest, aDamagedLibraryThatIsTheFirstOneLeavesTheWelcomePageAndSaysWhy)
{
    QFile database(library() + u"/Database/apdb/Library.apdb"_s);
    ASSERT_TRUE(database.open(QIODevice::ReadWrite));
    database.write(QByteArray(4096, 'x'));
    database.close();
    open(library());
    EXPECT_FALSE(m_session.isOpen());
    const auto* const box = m_window.findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);
    EXPECT_TRUE(box->isVisible());
    EXPECT_TRUE(box->informativeText().contains(library()));
    EXPECT_TRUE(part<QPushButton>(u"chooseLibrary"_s).isVisible());
    EXPECT_FALSE(part<QLabel>(u"welcomeHint"_s).text().contains(u"Opening"_s));
    EXPECT_TRUE(m_recent.paths().isEmpty()) << "it was not opened";
}

TEST_F(LibraryWindowTest, aLibraryThatIsDroppedOnTheWindowIsOpened)
{
    EXPECT_FALSE(isDropTaken(m_folder.filePath(u"settings.plist"_s)));
    EXPECT_TRUE(isDropTaken(library()));
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_EQ(m_session.contents().path, library());
}

TEST_F(LibraryWindowTest, duringAScanALibraryThatIsDroppedIsRefused)
{
    m_window.setScanning(true);
    EXPECT_FALSE(isDropTaken(library()));
    EXPECT_FALSE(m_session.isBusy());
}

TEST_F(LibraryWindowTest, anOfferedLibraryIsOpenedByItsButton)
{
    m_window.offer({library()});
    QTest::mouseClick(&part<QPushButton>(u"offer"_s), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    EXPECT_EQ(m_session.contents().path, library());
    EXPECT_TRUE(grid().isVisible());
}
