#include "ForecastLabel.h"
#include "OpenPanelAnswer.h"
#include "OrdinaryUser.h"
#include "PhotoViewer.h"
#include "ProgramFixture.h"
#include "PropertyList.h"
#include "WhenModal.h"
#include "ZTBCrashReporterWindow.h"

#include <QDirIterator>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSet>
#include <QStatusBar>
#include <QTreeView>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

class DesktopProgramTest : public ProgramFixture
{
protected:
    /// The files of the two RAW photos.
    [[nodiscard]] QStringList rawMasters() const
    {
        QStringList found;
        QDirIterator walk(
            library() + u"/Masters"_s, {u"*.dng"_s}, QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            found.append(walk.next());
        }
        return found;
    }

    [[nodiscard]] static PhotoViewer* viewer()
    {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* const window : windows) {
            if (auto* const found = qobject_cast<PhotoViewer*>(window)) {
                return found;
            }
        }
        return nullptr;
    }
};

} // namespace

TEST_F(DesktopProgramTest, withoutALibraryTheCountIsZeroAndAHintSaysWhatToDo)
{
    m_program->start({});
    m_program->corvaneWindow().show();
    EXPECT_FALSE(m_program->session().isOpen());
    EXPECT_EQ(control<QLabel>("selectedLabel").text(), u"0"_s);
    const auto* const hint = m_program->libraryWindow().findChild<QLabel*>(u"welcomeHint"_s);
    ASSERT_NE(hint, nullptr);
    EXPECT_TRUE(hint->isVisible());
    EXPECT_TRUE(hint->text().startsWith(u"Open an iPhoto library"_s));
    const QString forecast = control<ForecastLabel>("pressForecast").plainText();
    EXPECT_TRUE(forecast.startsWith(u"Open a library first"_s)) << forecast.toStdString();
    EXPECT_FALSE(actions().emptyTrash->isEnabled());
}

TEST_F(DesktopProgramTest, aScanWithoutALibrarySaysSoAndOpeningOneResetsTheControls)
{
    m_program->start({});
    m_program->corvaneWindow().show();
    auto* const ok = new QTimer(qApp);
    QObject::connect(ok, &QTimer::timeout, [ok] {
        if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            EXPECT_EQ(box->text(), u"Error"_s);
            EXPECT_TRUE(box->informativeText().contains(u"No photo library is open."_s));
            ok->deleteLater();
            box->button(QMessageBox::Ok)->click();
        }
    });
    ok->start(10);
    scan();
    EXPECT_FALSE(control("selectionScanButton").isEnabled());
    m_program->libraryWindow().openLibrary(library());
    ASSERT_TRUE(waitUntil([this] { return m_program->session().isOpen() && isIdle(); }));
    EXPECT_TRUE(waitUntil([this] { return control("selectionScanButton").isEnabled(); }));
    EXPECT_EQ(control<QLabel>("statusLabel").text(), u"Ready"_s);
}

TEST_F(DesktopProgramTest, anOpenedLibraryShowsItsPhotosAndWhatIsSelected)
{
    open();
    EXPECT_EQ(grid().model()->rowCount(), 5);
    actions().selectRaw->trigger();
    EXPECT_TRUE(waitUntil([this] { return control<QLabel>("selectedLabel").text() == u"2"_s; }));
    actions().invertSelection->trigger();
    EXPECT_TRUE(waitUntil([this] { return control<QLabel>("selectedLabel").text() == u"3"_s; }));
    actions().selectAll->trigger();
    EXPECT_TRUE(waitUntil([this] { return control<QLabel>("selectedLabel").text() == u"5"_s; }));
}

TEST_F(DesktopProgramTest, aScanTakesWhatWasSelectedRightBeforeThePress)
{
    open();
    actions().selectAll->trigger();
    ASSERT_TRUE(waitUntil([this] { return control<QLabel>("selectedLabel").text() == u"5"_s; }));
    // As after a stall: the selection and the press are handled before the event loop turns.
    actions().selectRaw->trigger();
    scan();
    EXPECT_EQ(copiesIn(afterwards()).size(), 2) << "the JPEG photos are not selected any more";
}

TEST_F(DesktopProgramTest, selectRawLeavesOutAMissingMasterAndSaysSo)
{
    const QStringList masters = rawMasters();
    ASSERT_EQ(masters.size(), 2);
    ASSERT_TRUE(QFile::remove(masters.first()));
    open();
    actions().selectRaw->trigger();
    EXPECT_EQ(grid().selectedPhotos().size(), 1);
    EXPECT_EQ(m_program->libraryWindow().statusBar()->currentMessage(),
              u"RAW photos selected: 1. Left out, original missing: 1."_s);
}

TEST_F(DesktopProgramTest, selectRawLeavesOutAMasterThatMayNotBeReadAndSaysSo)
{
    const OrdinaryUser user({m_folder.path()});
    const WithPermissions closed(rawMasters().first(), 0);
    open();
    actions().selectRaw->trigger();
    EXPECT_EQ(grid().selectedPhotos().size(), 1);
    EXPECT_EQ(m_program->libraryWindow().statusBar()->currentMessage(),
              u"RAW photos selected: 1. Left out, original may not be read: 1."_s);
    m_program.reset();
}

TEST_F(DesktopProgramTest, aWholeSessionConvertsFilesByEventTrashesAndFreesSpace)
{
    open();
    QHash<QString, PhotoFacts> originals; // by name
    for (const PhotoFacts& photo : m_program->session().contents().photos) {
        if (photo.raw) {
            ASSERT_FALSE(photo.rollName.isEmpty());
            originals.insert(photo.name, photo);
        }
    }
    selectRawPhotos();
    control("outputSizeMatrix").findChildren<QAbstractButton*>().at(2)->click();
    click("TrashEnabled");
    click("AlbumEnabled");
    whenModal([this](QWidget& panel) { answerOpenPanel(panel, library()); });
    scan();
    EXPECT_EQ(alerts(), QStringList{u"All Done"_s});
    EXPECT_EQ(grid().model()->rowCount(), 6)
        << "two copies, the keyword picture, three JPEG photos";
    EXPECT_EQ(m_program->session().contents().trash.size(), 2);

    answerSoon(u"emptyTrashQuestion"_s, u"Delete"_s);
    ASSERT_TRUE(actions().emptyTrash->isEnabled());
    actions().emptyTrash->trigger();
    ASSERT_TRUE(
        waitUntil([this] { return isIdle() && m_program->session().contents().trash.isEmpty(); }));

    const LibraryContents contents = afterwards();
    EXPECT_EQ(contents.trash.size(), 0);
    const QList<PhotoFacts> copies = copiesIn(contents);
    ASSERT_EQ(copies.size(), 2);
    for (const PhotoFacts& copy : copies) {
        const PhotoFacts original = originals.take(copy.name);
        EXPECT_TRUE(copy.albums.contains(original.rollName)) << copy.name.toStdString();
        EXPECT_NEAR(copy.width, original.width / 2.0, 1.0);
        EXPECT_FALSE(QFile::exists(original.originalPath)) << "its space is free";
    }
    EXPECT_TRUE(originals.isEmpty()) << "each has its copy";
    for (const PhotoFacts& photo : contents.photos) {
        EXPECT_FALSE(photo.raw) << photo.fileName.toStdString();
    }
}

TEST_F(DesktopProgramTest, theTrashIsKeptWhereItsDeletionIsNotConfirmed)
{
    open();
    selectRawPhotos();
    click("TrashEnabled");
    scan();
    bool isAsked = false;
    whenModal([&isAsked](QWidget& question) {
        isAsked = question.objectName() == u"emptyTrashQuestion"_s;
        pressIn(question, u"Cancel"_s);
    });
    actions().emptyTrash->trigger();
    EXPECT_TRUE(isAsked);
    EXPECT_TRUE(isIdle());
    const LibraryContents contents = afterwards();
    ASSERT_EQ(contents.trash.size(), 2);
    for (const PhotoFacts& photo : contents.trash) {
        EXPECT_TRUE(QFile::exists(photo.originalPath));
    }
}

TEST_F(DesktopProgramTest, whatIsInTheTrashIsPutBack)
{
    open();
    selectRawPhotos();
    click("TrashEnabled");
    scan();
    ASSERT_EQ(m_program->session().contents().trash.size(), 2);
    EXPECT_FALSE(actions().putBack->isEnabled()) << "only where the trash is seen";
    actions().showTrash->trigger();
    EXPECT_EQ(grid().model()->rowCount(), 2);
    ASSERT_TRUE(actions().putBack->isEnabled());
    actions().putBack->trigger();
    ASSERT_TRUE(
        waitUntil([this] { return isIdle() && m_program->session().contents().trash.isEmpty(); }));
    EXPECT_EQ(afterwards().photos.size(), 8);
}

TEST_F(DesktopProgramTest, clicksInTheLibraryWindowDuringAScanChangeNothingOfWhatItDoes)
{
    open();
    selectRawPhotos();
    const QList<qint64> chosen = grid().selectedPhotos();
    int meddled = 0;
    betweenTwoPhotos([this, &meddled] {
        actions().selectAll->trigger();
        m_program->libraryWindow().settleSelection();
        actions().invertSelection->trigger();
        m_program->libraryWindow().settleSelection();
        ++meddled;
    });
    scan();
    EXPECT_GE(meddled, 1);
    const LibraryContents contents = afterwards();
    QList<qint64> tagged;
    for (const PhotoFacts& photo : contents.photos) {
        const bool isPicture = photo.fileName.startsWith(u"iPhoto Keywords"_s);
        if (!isPicture && photo.keywords.contains(u"Corvane Original"_s)) {
            tagged.append(photo.id);
        }
    }
    EXPECT_EQ(tagged, chosen);
    EXPECT_EQ(copiesIn(contents).size(), 2);
}

TEST_F(DesktopProgramTest, aClickBetweenAPhotosSelectionAndItsKeywordChangesNotWhoGetsIt)
{
    open();
    m_program->session().holdSelection(true); // as a scan does
    const PhotoApplicationPtr application =
        m_program->session().applicationWithBundleIdentifier(u"com.apple.iPhoto"_s);
    const PhotoPtr photo = application->photoLibraryAlbum()->photos().at(0);
    const QList<Keyword> known = application->keywords();
    const auto fresh = std::ranges::find_if(
        known, [&photo](const Keyword& keyword) { return !photo->keywords().contains(keyword); });
    ASSERT_NE(fresh, known.end());
    const auto carriers = [&fresh](const LibraryContents& contents) {
        QSet<qint64> ids;
        for (const PhotoFacts& facts : contents.photos) {
            if (facts.keywords.contains(fresh->name)) {
                ids += facts.id;
            }
        }
        return ids;
    };
    const QSet<qint64> before = carriers(m_program->session().contents());

    photo->select();
    actions().selectAll->trigger();
    m_program->libraryWindow().settleSelection();
    EXPECT_EQ(m_program->session().selection().size(), 5) << "remembered";
    application->assignKeywordString(fresh->name);
    m_program->session().holdSelection(false);
    EXPECT_EQ(carriers(afterwards()), before + QSet<qint64>{photo->id()});
}

TEST_F(DesktopProgramTest, aScanPressedWhileTheLibraryIsCheckedRunsWhenThatIsDone)
{
    QObject::connect(&m_program->session(), &LibrarySession::shown, m_program.get(), [this] {
        ASSERT_TRUE(m_program->session().contents().checking);
        actions().selectRaw->trigger();
        click("selectionScanButton");
    });
    m_program->start(library());
    ASSERT_TRUE(waitUntil([this] { return alerts().contains(u"All Done"_s); }));
    ASSERT_TRUE(waitUntil([this] { return isIdle(); }));
    EXPECT_EQ(alerts(), QStringList{u"All Done"_s});
    EXPECT_EQ(copiesIn(afterwards()).size(), 2);
}

TEST_F(DesktopProgramTest, aScanPressedBeforeTheLibraryIsThereLeavesTheControlsUsable)
{
    m_program->start(library());
    click("selectionScanButton");
    ASSERT_TRUE(waitUntil([this] { return !m_program->controller().isScanning() && isIdle(); }));
    EXPECT_TRUE(control<QAbstractButton>("selectionScanButton").isEnabled());
    EXPECT_EQ(control<QLabel>("statusLabel").text(), u"Ready"_s);
    EXPECT_TRUE(m_program->session().contents().isWritable());
}

TEST_F(DesktopProgramTest, aDoublePressStartsTwoEnginesAndTheLibraryStaysSound)
{
    open();
    selectRawPhotos();
    click("TagEnabled"); // off: the keyword picture of both is not what is looked at
    int started = 0;
    QObject::connect(
        &m_program->controller(), &CorvaneAppDelegate::scanStarted, [&started] { ++started; });
    // Both clicks come before the event loop hears that the first engine has disabled the button.
    auto& button = control<QAbstractButton>("selectionScanButton");
    button.click();
    button.click();
    ASSERT_TRUE(waitUntil([this] { return !m_program->controller().isScanning(); }));
    EXPECT_EQ(started, 2);
    ASSERT_TRUE(waitUntil([this] { return isIdle(); }));
    EXPECT_EQ(afterwards().photos.size(), 9) << "each engine makes a copy of each RAW photo";
}

TEST_F(DesktopProgramTest, aPhotoThatIsSeenLargeIsStillSeenAfterAScanUnlessItIsGone)
{
    open();
    selectRawPhotos();
    grid().setFocus();
    for (const bool goes : {false, true}) {
        actions().showLarge->trigger();
        ASSERT_NE(viewer(), nullptr);
        const QString title = viewer()->windowTitle();
        if (goes) {
            click("TrashEnabled");
        }
        scan();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ASSERT_EQ(viewer() == nullptr, goes);
        if (!goes) {
            EXPECT_TRUE(viewer()->isVisible());
            EXPECT_EQ(viewer()->windowTitle(), title);
            EXPECT_EQ(grid().selectedPhotos().size(), 2) << "so is what was selected";
        }
    }
}

TEST_F(DesktopProgramTest, whileAScanRunsNothingIsOpenedPutBackOrDeleted)
{
    open();
    selectRawPhotos();
    click("TrashEnabled");
    scan();
    actions().showTrash->trigger();
    const QList<QAction*> held{actions().open,
                               actions().openRecent->menuAction(),
                               actions().putBack,
                               actions().emptyTrash};
    for (const QAction* const action : held) {
        ASSERT_TRUE(action->isEnabled()) << action->text().toStdString();
    }
    click("selectionScanButton");
    for (const QAction* const action : held) {
        EXPECT_FALSE(action->isEnabled()) << action->text().toStdString();
    }
    ASSERT_TRUE(waitUntil([this] { return !m_program->controller().isScanning() && isIdle(); }));
    for (const QAction* const action : held) {
        EXPECT_TRUE(action->isEnabled()) << action->text().toStdString();
    }
}

TEST_F(DesktopProgramTest, aLibraryInUseIsOpenedForReadingAndSaysWhy)
{
    auto other = PhotoLibrary::open(library(), {.access = Access::Write, .afterCrash = false});
    ASSERT_TRUE(other.ok());
    open();
    EXPECT_FALSE(m_program->session().contents().isWritable());
    auto* const why = m_program->libraryWindow().findChild<QLabel*>(u"whyReadOnly"_s);
    ASSERT_NE(why, nullptr);
    EXPECT_TRUE(why->isVisible());
    EXPECT_TRUE(why->text().contains(library()));
    EXPECT_FALSE(actions().emptyTrash->isEnabled());
}

TEST_F(DesktopProgramTest, aDamagedLibraryIsRefusedWithAMessageAndTheOpenOneStays)
{
    open();
    const QString broken = m_folder.filePath(u"Broken.photolibrary"_s);
    copyLibrary(library(), broken);
    QFile database(broken + u"/Database/apdb/Library.apdb"_s);
    ASSERT_TRUE(database.open(QIODevice::ReadWrite));
    database.write(QByteArray(4096, 'x'));
    database.close();
    m_program->libraryWindow().openLibrary(broken);
    ASSERT_TRUE(waitUntil([this] { return isIdle(); }));
    EXPECT_EQ(alerts(), QStringList{u"The library could not be opened"_s});
    EXPECT_EQ(m_program->session().contents().path, library());
    EXPECT_EQ(grid().model()->rowCount(), 5);
}

TEST_F(DesktopProgramTest, aLibraryThatIsRemovedWhileOpenLeavesWhatWasSeenAndSaysSo)
{
    open();
    ASSERT_TRUE(QDir().rename(library(), m_folder.filePath(u"Elsewhere"_s)));
    selectRawPhotos();
    scan();
    EXPECT_FALSE(alerts().isEmpty());
    EXPECT_FALSE(alerts().contains(u"All Done"_s));
    m_program.reset();
    EXPECT_FALSE(QFile::exists(library() + u"/Masters"_s)) << "nothing is written to where it was";
}

TEST_F(DesktopProgramTest, aNewCrashLogIsOfferedAtTheStart)
{
    m_program.reset();
    const QTemporaryDir state;
    qputenv("XDG_STATE_HOME", QFile::encodeName(state.path()));
    const QString logs = state.filePath(u"corvane/Logs/DiagnosticReports"_s);
    ASSERT_TRUE(QDir().mkpath(logs));
    QFile log(logs + u"/Corvane_1.crash"_s);
    ASSERT_TRUE(log.open(QIODevice::WriteOnly));
    log.close();
    {
        UserDefaults settings(m_folder.filePath(u"settings.plist"_s));
        settings.setValue(u"ZTBCrashReporterLastCrashReportDate"_s,
                          QVariant::fromValue(PropertyList::Date{0.0}));
        settings.setValue(u"ZTBCrashReporterCrashSubmissionURL"_s, u"http://127.0.0.1:1/"_s);
    }
    makeProgram();
    m_program->start({});
    const QPointer<ZTBCrashReporterWindow> window(m_program->crashReporting().window());
    ASSERT_FALSE(window.isNull());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(m_program->libraryWindow().isVisible());
    m_program.reset();
    EXPECT_TRUE(window.isNull()) << "it ends with the program";
    qunsetenv("XDG_STATE_HOME");
}

TEST_F(DesktopProgramTest, withoutAnAddressForCrashReportsTheProgramStartsAsEver)
{
    m_program->start({});
    EXPECT_EQ(m_program->crashReporting().window(), nullptr);
    EXPECT_TRUE(m_program->libraryWindow().isVisible());
}
