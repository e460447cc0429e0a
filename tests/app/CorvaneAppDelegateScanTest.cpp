#include "ControllerFixture.h"
#include "ProgressIndicator.h"
#include "Scripting.h"

#include <QImage>

using namespace Qt::StringLiterals;

namespace
{

/// Selection, launching scans, progress and alerts.
class CorvaneAppDelegateScanTest : public ControllerFixture
{
protected:
    /// Adds a photo of a picture on disk and answers its id.
    qint64 addPicture(const QString& name)
    {
        QImage picture(96, 64, QImage::Format_RGB32);
        picture.fill(qRgb(120, 90, 60));
        const QString path = m_folder.filePath(name);
        EXPECT_TRUE(picture.save(path));
        return m_application.addPhotoFile(path, picture.width(), picture.height());
    }
};

TEST_F(CorvaneAppDelegateScanTest, onePhotoCountsAsOneAndOneAlbumAsNone)
{
    CorvaneAppDelegate& controller = wake();
    EXPECT_EQ(controller.selectionCount(), 0U);
    const qint64 photo = m_application.addPhoto({});
    m_application.selectPhotos({photo});
    EXPECT_EQ(controller.selectionCount(), 1U);
    const AlbumPtr album = m_application.albumHandle(m_application.addAlbum(u"Trip"_s));
    m_application.setSelection({album});
    EXPECT_EQ(controller.selectionCount(), 0U);
    m_application.setSelection({album, m_application.photoHandle(photo)});
    EXPECT_EQ(controller.selectionCount(), 2U);
}

TEST_F(CorvaneAppDelegateScanTest, aScanRunsOnAThreadOfItsOwnUntilItHasEnded)
{
    m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
    CorvaneAppDelegate& controller = wake();
    QList<bool> enabled;
    QList<QThread*> threads;
    QObject::connect(
        &controller.selectionScanButton(), &Button::enabledChanged, [&](bool isEnabled) {
            enabled.append(isEnabled);
            threads.append(QThread::currentThread());
        });
    int ended = 0;
    QObject::connect(&controller, &CorvaneAppDelegate::scanEnded, [&] {
        ++ended;
        EXPECT_FALSE(controller.isScanning());
        EXPECT_EQ(QThread::currentThread(), qApp->thread());
    });
    controller.selectionScan(nullptr);
    EXPECT_TRUE(controller.isScanning());
    waitForScans();
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(enabled, (QList<bool>{false, true}));
    EXPECT_FALSE(threads.contains(qApp->thread()));
    EXPECT_FALSE(controller.nowProcessing());
    ASSERT_EQ(m_presenter.sheets().size(), 1) << "nothing was selected";
    EXPECT_EQ(m_presenter.sheets().first().messageText, u"Unable To Process"_s);
}

TEST_F(CorvaneAppDelegateScanTest, everyScanGetsAFreshEngine)
{
    m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
    CorvaneAppDelegate& controller = wake();
    for (int scan = 1; scan <= 3; ++scan) {
        const qsizetype askedBefore = m_application.identifiersAsked().size();
        controller.selectionScan(nullptr);
        waitForScans();
        // Engine and bridge each ask for the application when they are made.
        EXPECT_EQ(m_application.identifiersAsked().size(), askedBefore + 2);
        EXPECT_EQ(m_presenter.sheets().size(), scan);
    }
}

TEST_F(CorvaneAppDelegateScanTest, pressingTwiceBeforeTheEngineIsUpStartsTwo)
{
    m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
    CorvaneAppDelegate& controller = wake();
    int ended = 0;
    QObject::connect(&controller, &CorvaneAppDelegate::scanEnded, [&] { ++ended; });
    controller.selectionScan(nullptr);
    controller.selectionScan(nullptr);
    waitForScans();
    EXPECT_EQ(ended, 2);
    EXPECT_EQ(m_presenter.sheets().size(), 2);
}

TEST_F(CorvaneAppDelegateScanTest, aScanIsStartedAlsoWhileOneIsSaidToRun)
{
    m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
    CorvaneAppDelegate& controller = wake();
    controller.setNowProcessing(true);
    controller.selectionScanButton().setEnabled(false);
    controller.selectionScan(nullptr);
    EXPECT_TRUE(controller.isScanning());
    waitForScans();
}

TEST_F(CorvaneAppDelegateScanTest, destructionWaitsForTheScanAndServesItMeanwhile)
{
    m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
    wake().selectionScan(nullptr);
    m_controller.reset();
    ASSERT_EQ(m_presenter.sheets().size(), 1) << "the scan's alert was shown while waiting";
    EXPECT_EQ(m_presenter.sheets().first().messageText, u"Unable To Process"_s);
}

TEST_F(CorvaneAppDelegateScanTest, aCancelRequestIsNeverReset)
{
    m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
    CorvaneAppDelegate& controller = wake();
    controller.setCancelled(true);
    controller.selectionScan(nullptr);
    waitForScans();
    EXPECT_TRUE(controller.cancelled());
    EXPECT_FALSE(CorvaneAppDelegate::cancelledOfClass());
}

TEST_F(CorvaneAppDelegateScanTest, theSheetsAlertIsUpWhenTheCallReturns)
{
    CorvaneAppDelegate& controller = wake();
    QList<Alert> shown;
    QObject::connect(&controller, &CorvaneAppDelegate::alertShown, [&](const Alert& alert) {
        shown.append(alert);
    });
    runOnWorker([&] {
        controller.showAlert(u"the message"_s, u"The Title"_s);
        EXPECT_EQ(m_presenter.sheets().size(), 1);
        controller.showAlert(u"another"_s, u"Second"_s);
        EXPECT_EQ(m_presenter.sheets().size(), 2) << "the first may still be up";
    });
    EXPECT_EQ(m_presenter.sheets().first(), (Alert{u"The Title"_s, u"the message"_s}));
    EXPECT_EQ(shown, m_presenter.sheets());
    EXPECT_TRUE(m_presenter.modalAlerts().isEmpty());
}

TEST_F(CorvaneAppDelegateScanTest, theModalAlertHoldsItsCallerUntilItIsAnswered)
{
    CorvaneAppDelegate& controller = wake();
    std::atomic<bool> answered{false};
    m_presenter.whileModal = [&](const Alert&) { answered = true; };
    runOnWorker([&] {
        controller.showAlertOfClass(u"the message"_s, u"The Title"_s);
        EXPECT_TRUE(answered);
    });
    EXPECT_EQ(m_presenter.modalAlerts(), (QList<Alert>{{u"The Title"_s, u"the message"_s}}));
    EXPECT_TRUE(m_presenter.sheets().isEmpty());
    controller.showAlertOfClass(u"again"_s, u"On The Main Thread"_s);
    EXPECT_EQ(m_presenter.modalAlerts().size(), 2);
}

TEST_F(CorvaneAppDelegateScanTest, whatThePresenterRaisesReachesTheCallersThread)
{
    CorvaneAppDelegate& controller = wake();
    QList<Alert> shown;
    QObject::connect(&controller, &CorvaneAppDelegate::alertShown, [&](const Alert& alert) {
        shown.append(alert);
    });
    m_presenter.whileModal = [](const Alert&) {
        throw ScriptingException(u"NobodyToAnswer"_s, u"There is no terminal"_s);
    };
    QString raised;
    runOnWorker([&] {
        try {
            controller.showAlertOfClass(u"the message"_s, u"The Title"_s);
        } catch (const ScriptingException& exception) {
            raised = exception.name();
        }
    });
    EXPECT_EQ(raised, u"NobodyToAnswer"_s);
    EXPECT_EQ(shown.size(), 1);
    EXPECT_THROW(controller.showAlertOfClass(u"the message"_s, u"The Title"_s), ScriptingException);
}

TEST_F(CorvaneAppDelegateScanTest, aScanThatNobodyCanAnswerEnds)
{
    CorvaneAppDelegate& controller = wake();
    m_presenter.whileModal = [](const Alert&) {
        throw ScriptingException(u"NobodyToAnswer"_s, u"There is no terminal"_s);
    };
    controller.selectionScan(nullptr);
    waitForScans();
    EXPECT_EQ(m_presenter.modalAlerts().size(), 1);
    EXPECT_TRUE(controller.selectionScanButton().isEnabled());
    EXPECT_FALSE(controller.nowProcessing());
}

TEST_F(CorvaneAppDelegateScanTest, progressIsTheNumbersDoubleValue)
{
    CorvaneAppDelegate& controller = wake();
    ASSERT_TRUE(controller.progressIndicator().isIndeterminate());
    controller.cfgProgressBarDeterminate();
    controller.cfgProgressBarMaxValue(12);
    controller.cfgProgressBarCurrentValue(u"3.5"_s);
    EXPECT_FALSE(controller.progressIndicator().isIndeterminate());
    EXPECT_EQ(controller.progressIndicator().maxValue(), 12.0);
    EXPECT_EQ(controller.progressIndicator().doubleValue(), 3.5);
}

TEST_F(CorvaneAppDelegateScanTest, theBarsMaximumIsTheSelectionsSizeFromItsLoadingToTheNextOne)
{
    m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
    const QList<qint64> photos{addPicture(u"a.jpg"_s), addPicture(u"b.jpg"_s)};
    CorvaneAppDelegate& controller = wake();
    const ProgressIndicator& bar = controller.progressIndicator();
    QList<double> maxima;
    for (const QString& call : {u"application.selection"_s,
                                u"photo 1.properties"_s,
                                u"photo 2.properties"_s,
                                u"photo 1.height"_s,
                                u"photo 2.height"_s,
                                u"photo 2.removeFrom"_s}) {
        m_application.whenCalled(call, [&] { maxima.append(bar.maxValue()); });
    }
    m_defaults.setBool(u"TrashEnabled"_s, true);
    const auto scan = [&](const QList<qint64>& selection) {
        maxima.clear();
        m_application.selectPhotos(selection);
        controller.selectionScan(nullptr);
        waitForScans();
        maxima.append(bar.maxValue());
        return maxima;
    };
    EXPECT_EQ(scan(photos), (QList<double>{100.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0}));
    EXPECT_FALSE(bar.isIndeterminate());
    EXPECT_EQ(bar.doubleValue(), 0.0);
    EXPECT_EQ(scan({photos.last()}), (QList<double>{2.0, 1.0, 1.0, 1.0, 1.0}));
    EXPECT_EQ(m_presenter.sheets().size(), 2);
    EXPECT_EQ(m_presenter.sheets().last().messageText, u"All Done"_s);
}

TEST_F(CorvaneAppDelegateScanTest, anInformationTextChangesNothing)
{
    CorvaneAppDelegate& controller = wake();
    controller.statusLabel().setStringValue(u"Ready"_s);
    controller.cfgInfoText(u"any text"_s);
    EXPECT_EQ(controller.statusLabel().stringValue(), u"Ready"_s);
    EXPECT_EQ(controller.countLabel().stringValue(), QString());
    EXPECT_EQ(controller.selectedLabel().stringValue(), QString());
    EXPECT_EQ(controller.timeRemaining(), u"--:--:--"_s);
    EXPECT_TRUE(controller.progressIndicator().isIndeterminate());
    EXPECT_EQ(controller.progressIndicator().doubleValue(), 0.0);
    EXPECT_TRUE(controller.selectionScanButton().isEnabled());
    EXPECT_TRUE(m_presenter.events().isEmpty());
}

TEST_F(CorvaneAppDelegateScanTest, theRemainingTimeIsAnnouncedOnceItIsThere)
{
    CorvaneAppDelegate& controller = wake();
    QStringList announced;
    QObject::connect(
        &controller, &CorvaneAppDelegate::timeRemainingChanged, [&](const QString& text) {
            announced.append(text);
            EXPECT_EQ(controller.timeRemaining(), text);
        });
    controller.setTimeRemaining(u"00:01:10"_s);
    EXPECT_EQ(announced, QStringList{u"00:01:10"_s});
}

TEST_F(CorvaneAppDelegateScanTest, outcomesArriveOnTheMainThreadInTheirOrder)
{
    CorvaneAppDelegate& controller = wake();
    QList<qint64> arrived;
    const auto note = [&](qint64 id) {
        EXPECT_EQ(QThread::currentThread(), qApp->thread());
        arrived.append(id);
    };
    QObject::connect(&controller,
                     &CorvaneAppDelegate::selectionTaken,
                     [&](const QList<PhotoOutcome>& photos) { note(-photos.size()); });
    QObject::connect(&controller, &CorvaneAppDelegate::photoDone, [&](const PhotoOutcome& outcome) {
        note(outcome.photoId);
    });
    runOnWorker([&] {
        controller.photosSelected({PhotoOutcome{}, PhotoOutcome{}});
        for (const qint64 id : {7, 8, 9}) {
            PhotoOutcome outcome;
            outcome.photoId = id;
            controller.photoFinished(outcome);
        }
    });
    QCoreApplication::processEvents();
    EXPECT_EQ(arrived, (QList<qint64>{-2, 7, 8, 9}));
}

TEST_F(CorvaneAppDelegateScanTest, thePagesAreThoseOfTheBundle)
{
    CorvaneAppDelegate& controller = wake();
    controller.moreInfoButton(nullptr);
    controller.techSupport(nullptr);
    EXPECT_EQ(m_workspace.opened(),
              (QList<QUrl>{QUrl(u"https://corvane.example/iphoto"_s),
                           QUrl(u"https://corvane.example/iphoto/support"_s)}));
    EXPECT_TRUE(m_presenter.sheets().isEmpty());
}

TEST_F(CorvaneAppDelegateScanTest, aPageThatCannotBeOpenedIsToldInASheet)
{
    CorvaneAppDelegate& controller = wake();
    m_workspace.setCanOpen(false);
    controller.moreInfoButton(nullptr);
    ASSERT_EQ(m_presenter.sheets().size(), 1);
    EXPECT_TRUE(
        m_presenter.sheets().first().informativeText.contains(u"https://corvane.example/iphoto"_s));
}

} // namespace
