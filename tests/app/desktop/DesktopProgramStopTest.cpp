#include "ProgramFixture.h"
#include "WhenModal.h"

#include <QLabel>

#include <optional>

using namespace Qt::StringLiterals;

namespace
{

/// The end of the program, of a scan and of the person's session.
class DesktopProgramStopTest : public ProgramFixture
{
protected:
    /// The photos are what they were, or copied whole, and nothing is in the trash.
    void expectStoppedInOrder()
    {
        const LibraryContents contents = afterwards();
        EXPECT_LT(copiesIn(contents).size(), 2) << "it stopped before the last import";
        EXPECT_EQ(contents.trash.size(), 0);
    }
};

} // namespace

TEST_F(DesktopProgramStopTest, closingDuringAScanAsksAndGoesOnWhenToldSo)
{
    open();
    selectRawPhotos();
    click("selectionScanButton");
    answerSoon(u"quitQuestion"_s, u"Keep Scanning"_s);
    EXPECT_FALSE(m_program->libraryWindow().close());
    EXPECT_TRUE(m_program->libraryWindow().isVisible());
    ASSERT_TRUE(waitUntil([this] { return !m_program->controller().isScanning() && isIdle(); }));
    EXPECT_EQ(copiesIn(afterwards()).size(), 2);
}

TEST_F(DesktopProgramStopTest, closingDuringAScanStopsItBetweenTwoPhotosWhenToldSo)
{
    open();
    selectRawPhotos();
    int ended = 0;
    QObject::connect(m_program.get(), &DesktopProgram::ended, [&ended] { ++ended; });
    bool isClosed = true;
    betweenTwoPhotos([this, &isClosed] {
        answerSoon(u"quitQuestion"_s, u"Stop and Quit"_s);
        isClosed = m_program->libraryWindow().close();
    });
    click("selectionScanButton");
    EXPECT_TRUE(waitUntil([&ended] { return ended > 0; }));
    EXPECT_FALSE(isClosed) << "before the scan has come to its end";
    EXPECT_FALSE(m_program->controller().cancelled()) << "no control of a window cancels";
    const LibraryContents contents = afterwards();
    const QList<PhotoFacts> copies = copiesIn(contents);
    ASSERT_EQ(copies.size(), 1) << "the first is copied, the second is not";
    EXPECT_FALSE(copies.first().missing);
    EXPECT_EQ(contents.trash.size(), 0);
}

TEST_F(DesktopProgramStopTest, toldToStopDuringAScanItAsksNobodyAndEndsWhenTheTurnIsOver)
{
    open();
    selectRawPhotos();
    int ended = 0;
    QObject::connect(m_program.get(), &DesktopProgram::ended, [&ended] { ++ended; });
    click("selectionScanButton");
    m_program->stopAndQuit();
    m_program->stopAndQuit();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(ended, 0) << "the scan's thread lives";
    EXPECT_TRUE(waitUntil([&ended] { return ended > 0; }));
    EXPECT_FALSE(m_program->controller().isScanning());
    EXPECT_FALSE(m_program->libraryWindow().isVisible());
    EXPECT_EQ(ended, 1);
    expectStoppedInOrder();
}

TEST_F(DesktopProgramStopTest, toldToStopWhileItAsksItAsksNoLonger)
{
    open();
    selectRawPhotos();
    bool ended = false;
    QObject::connect(m_program.get(), &DesktopProgram::ended, [&ended] { ended = true; });
    click("selectionScanButton");
    whenModal([this](QWidget& question) {
        EXPECT_EQ(question.objectName(), u"quitQuestion"_s);
        m_program->stopAndQuit();
        EXPECT_FALSE(question.isVisible());
    });
    EXPECT_FALSE(m_program->libraryWindow().close());
    EXPECT_TRUE(waitUntil([&ended] { return ended; }));
    expectStoppedInOrder();
}

TEST_F(DesktopProgramStopTest, toldToStopWithoutAScanItEndsAtOnce)
{
    open();
    bool ended = false;
    QObject::connect(m_program.get(), &DesktopProgram::ended, [&ended] { ended = true; });
    m_program->stopAndQuit();
    EXPECT_TRUE(ended);
    EXPECT_FALSE(m_program->libraryWindow().isVisible());
}

TEST_F(DesktopProgramStopTest, theEndOfTheSessionWaitsUntilAScanHasStoppedInOrder)
{
    open();
    EXPECT_TRUE(m_program->mayEndSession(true)) << "without a scan there is nothing to ask";
    selectRawPhotos();
    click("selectionScanButton");
    ASSERT_TRUE(m_program->controller().isScanning());
    EXPECT_TRUE(m_program->mayEndSession(false));
    EXPECT_FALSE(m_program->controller().isScanning());
    EXPECT_TRUE(isIdle());
    expectStoppedInOrder();
}

TEST_F(DesktopProgramStopTest, theEndOfTheSessionIsRefusedWhenTheScanIsToGoOn)
{
    open();
    selectRawPhotos();
    click("selectionScanButton");
    answerSoon(u"quitQuestion"_s, u"Keep Scanning"_s);
    EXPECT_FALSE(m_program->mayEndSession(true));
    ASSERT_TRUE(waitUntil([this] { return !m_program->controller().isScanning() && isIdle(); }));
    EXPECT_EQ(copiesIn(afterwards()).size(), 2);
}

TEST_F(DesktopProgramStopTest, theEndOfTheSessionWaitsForTheQuestionThatIsUpAndForNoOther)
{
    open();
    selectRawPhotos();
    click("selectionScanButton");
    int questions = 0;
    std::optional<bool> mayEnd;
    const auto countQuestions = [&questions] {
        for (const QWidget* const window : QApplication::topLevelWidgets()) {
            questions += window->isVisible() && window->objectName() == u"quitQuestion"_s ? 1 : 0;
        }
    };
    whenModal([&](QWidget& question) {
        EXPECT_EQ(question.objectName(), u"quitQuestion"_s);
        // Once the second one asks.
        QTimer::singleShot(0, &question, [&] {
            countQuestions();
            pressIn(question, u"Stop and Quit"_s);
        });
        mayEnd = m_program->mayEndSession(true);
    });
    EXPECT_FALSE(m_program->libraryWindow().close());
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(mayEnd, true);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    expectStoppedInOrder();
}

TEST_F(DesktopProgramStopTest, aSignalWhileTheSessionAsksEndsTheProgramAndTheSession)
{
    open();
    selectRawPhotos();
    click("selectionScanButton");
    whenModal([this](QWidget&) { m_program->stopAndQuit(); });
    EXPECT_TRUE(m_program->mayEndSession(true)) << "it is not held up by a question taken back";
    expectStoppedInOrder();
}

TEST_F(DesktopProgramStopTest, noScanBeginsWhileTheEndOfTheSessionWaits)
{
    open();
    selectRawPhotos();
    m_program->session().reload();
    ASSERT_FALSE(isIdle());
    int tries = 0;
    QTimer::singleShot(0, [this, &tries] {
        ++tries;
        EXPECT_FALSE(m_program->libraryWindow().isEnabled());
        click("selectionScanButton");
    });
    EXPECT_TRUE(m_program->mayEndSession(true));
    EXPECT_EQ(tries, 1);
    EXPECT_FALSE(m_program->controller().isScanning());
    EXPECT_TRUE(m_program->libraryWindow().isEnabled()) << "somebody else may refuse the end";
    EXPECT_TRUE(control("selectionScanButton").isEnabled());
}

TEST_F(DesktopProgramStopTest, aProgramThatGoesDuringAScanWaitsForItAndLeavesTheLibrarySound)
{
    open();
    selectRawPhotos();
    click("selectionScanButton");
    ASSERT_TRUE(m_program->controller().isScanning());
    expectStoppedInOrder();
}
