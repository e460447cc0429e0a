#include "DesktopFixture.h"
#include "LibraryOpenPanel.h"
#include "OpenPanelAnswer.h"
#include "Scripting.h"

#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include <atomic>

using namespace Qt::StringLiterals;

namespace
{

class DesktopPresenterTest : public DesktopFixture
{
protected:
    void SetUp() override
    {
        m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
        ASSERT_TRUE(QDir().mkpath(m_libraryPath));
    }

    QList<QMessageBox*> alerts() { return m_window->findChildren<QMessageBox*>(); }

    static void press(QWidget& dialog, QMessageBox::StandardButton which)
    {
        click(*dynamic_cast<QMessageBox&>(dialog).button(which));
    }

    const QString m_libraryPath{m_folder.filePath(u"My.photolibrary"_s)};
};

TEST_F(DesktopPresenterTest, aSheetLetsTheWorkerGoOn)
{
    showWindow();
    std::atomic<int> returned{0};
    runOnWorker([&] {
        m_controller->showAlert(u"<i>one</i>\nline"_s, u"First"_s);
        ++returned;
        m_controller->showAlert(u"two"_s, u"Second"_s);
        ++returned;
    });
    EXPECT_EQ(returned, 2);
    ASSERT_EQ(alerts().size(), 2);
    for (const QMessageBox* const alert : alerts()) {
        EXPECT_TRUE(alert->isVisible());
        EXPECT_EQ(alert->windowModality(), Qt::WindowModal);
        EXPECT_EQ(alert->icon(), QMessageBox::Warning);
        EXPECT_EQ(alert->standardButtons(), QMessageBox::Ok);
        EXPECT_TRUE(alert->textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    }
    EXPECT_EQ(alerts().first()->text(), u"First"_s);
    EXPECT_EQ(alerts().first()->informativeText(), u"<i>one</i>\nline"_s);
    for (const QLabel* const label : alerts().first()->findChildren<QLabel*>()) {
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
    }
}

TEST_F(DesktopPresenterTest, aDismissedSheetIsGone)
{
    showWindow();
    m_controller->showAlert(u"one"_s, u"First"_s);
    m_controller->showAlert(u"two"_s, u"Second"_s);
    press(*alerts().first(), QMessageBox::Ok);
    settle();
    ASSERT_EQ(alerts().size(), 1);
    EXPECT_EQ(alerts().first()->text(), u"Second"_s);
    QTest::keyClick(alerts().first(), Qt::Key_Escape);
    settle();
    EXPECT_TRUE(alerts().isEmpty());
}

TEST_F(DesktopPresenterTest, aModalAlertHoldsTheWorker)
{
    showWindow();
    std::atomic<bool> returned{false};
    bool shown = false;
    whenModal([&](QWidget& dialog) {
        EXPECT_EQ(dialog.windowModality(), Qt::ApplicationModal);
        EXPECT_EQ(dynamic_cast<QMessageBox&>(dialog).text(), u"Missing Keywords"_s);
        // The program's windows go on meanwhile.
        m_controller->statusLabel().setStringValue(u"Waiting"_s);
        EXPECT_EQ(child<QLabel>(u"statusLabel"_s).text(), u"Waiting"_s);
        EXPECT_FALSE(returned);
        shown = true;
        press(dialog, QMessageBox::Ok);
    });
    runOnWorker([&] {
        m_controller->showAlertOfClass(u"message"_s, u"Missing Keywords"_s);
        returned = true;
    });
    EXPECT_TRUE(shown);
    EXPECT_TRUE(returned);
    settle();
    EXPECT_TRUE(alerts().isEmpty());
}

TEST_F(DesktopPresenterTest, theLibraryPromptYieldsTheLibrary)
{
    m_defaults.setBool(u"AlbumEnabled"_s, true);
    showWindow();
    QString title;
    QString message;
    whenModal([&](QWidget& dialog) {
        title = dialog.windowTitle();
        message = dialog.findChild<QLabel*>(u"openPanelMessage"_s)->text();
        answerOpenPanel(dialog, m_libraryPath);
    });
    click(u"selectionScanButton"_s);
    EXPECT_EQ(m_controller->theLibrary(), m_libraryPath);
    EXPECT_EQ(title, u"Read Access Required"_s);
    EXPECT_TRUE(message.startsWith(u"Corvane requests read access to your iPhoto Library"_s));
    waitForScans();
}

TEST_F(DesktopPresenterTest, aCancelledLibraryPromptLetsTheScanStart)
{
    m_defaults.setBool(u"AlbumEnabled"_s, true);
    showWindow();
    whenModal([&](QWidget& dialog) { answerOpenPanel(dialog, {}); });
    click(u"selectionScanButton"_s);
    EXPECT_EQ(m_controller->theLibrary(), std::nullopt);
    EXPECT_TRUE(m_controller->isScanning());
    waitForScans();
}

TEST_F(DesktopPresenterTest, aFilePromptComesAgainUntilItIsAnswered)
{
    showWindow();
    int asked = 0;
    const auto cancel = [&](QWidget& dialog) {
        ++asked;
        whenModal([&](QWidget& again) {
            ++asked;
            answerOpenPanel(again, m_folder.path());
        });
        answerOpenPanel(dialog, {});
    };
    whenModal(cancel);
    m_controller->userSelectedFiles(m_folder.filePath(u"outside.cr2"_s));
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(m_controller->userSelectedFilesCount(), 1U);
    EXPECT_EQ(m_log.entries(), QStringList{u"NSOpenPanel result = 0"_s});
}

TEST_F(DesktopPresenterTest, withoutAWindowNothingIsAskedOfIt)
{
    m_desktopPresenter.beginFixedSizeSheet();
    m_desktopPresenter.commitEditing(Presenter::Field::ShortSide);
    m_desktopPresenter.endFixedSizeSheet();
    showWindow();
    m_window.reset();
    m_desktopPresenter.beginFixedSizeSheet();
}

TEST_F(DesktopPresenterTest, whileTheProgramEndsNobodyIsAsked)
{
    showWindow();
    m_controller->showAlert(u"one"_s, u"First"_s);
    m_desktopPresenter.stop();
    settle();
    EXPECT_TRUE(alerts().isEmpty());
    m_controller->showAlert(u"two"_s, u"Second"_s);
    EXPECT_TRUE(alerts().isEmpty());
    EXPECT_THROW(m_controller->showAlertOfClass(u"three"_s, u"Third"_s), ScriptingException);
    m_controller->userSelectedFiles(u"/outside/a.cr2"_s);
    EXPECT_EQ(m_controller->userSelectedFilesCount(), 1U);
}

TEST_F(DesktopPresenterTest, whatIsUpIsAnsweredWhenTheProgramEnds)
{
    showWindow();
    whenModal([this](QWidget&) { m_desktopPresenter.stop(); });
    QString raised;
    runOnWorker([&] {
        try {
            m_controller->showAlertOfClass(u"message"_s, u"Missing Keywords"_s);
        } catch (const ScriptingException& exception) {
            raised = exception.name();
        }
    });
    EXPECT_EQ(raised, u"AlertNotAnswered"_s);
}

TEST_F(DesktopPresenterTest, anOpenPanelThatIsUpIsAnsweredWhenTheProgramEnds)
{
    showWindow();
    whenModal([this](QWidget&) { m_desktopPresenter.stop(); });
    m_controller->userSelectedFiles(m_folder.filePath(u"outside.cr2"_s));
    EXPECT_EQ(m_controller->userSelectedFilesCount(), 1U);
    EXPECT_TRUE(m_log.entries().isEmpty());
}

} // namespace
