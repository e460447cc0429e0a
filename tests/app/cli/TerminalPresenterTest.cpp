#include "TerminalPresenter.h"

#include "Console.h"
#include "Interruption.h"
#include "Scripting.h"

#include <QBuffer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class TerminalPresenterTest : public testing::Test
{
protected:
    TerminalPresenterTest()
    {
        m_output.open(QIODevice::WriteOnly);
        m_error.open(QIODevice::WriteOnly);
    }

    using Summary = TerminalPresenter::Summary;
    QBuffer m_output;
    QBuffer m_error;
    Console m_console{m_output, m_error, {}};
    Interruption m_interruption;
    TerminalPresenter m_presenter{m_console, m_interruption, u"/L"_s, Summary::Output};
    const Alert m_alert{.messageText = u"Unable To Process"_s, .informativeText = u"Text"_s};
    const Alert m_done{.messageText = u"All Done"_s, .informativeText = u"Stats"_s};
};

} // namespace

TEST_F(TerminalPresenterTest, anAlertIsPrintedToStandardErrorAndStops)
{
    m_presenter.beginSheet(m_alert);
    EXPECT_EQ(m_error.data(), "Unable To Process\nText\n");
    EXPECT_EQ(m_output.data(), QByteArray());
    EXPECT_EQ(m_presenter.stopped(), m_alert);
}

TEST_F(TerminalPresenterTest, theSummaryIsAResultAndStopsNothing)
{
    m_presenter.beginSheet(m_done);
    EXPECT_EQ(m_output.data(), "All Done\nStats\n");
    EXPECT_EQ(m_presenter.stopped(), std::nullopt);
}

TEST_F(TerminalPresenterTest, theSummaryMakesRoomForAReport)
{
    TerminalPresenter presenter(m_console, m_interruption, u"/L"_s, Summary::Error);
    presenter.beginSheet(m_done);
    EXPECT_EQ(m_output.data(), QByteArray());
    EXPECT_EQ(m_error.data(), "All Done\nStats\n");
}

TEST_F(TerminalPresenterTest, withNobodyToAnswerAModalAlertCountsAsDismissed)
{
    m_presenter.runModal(m_alert);
    EXPECT_EQ(m_error.data(), "Unable To Process\nText\n");
    EXPECT_EQ(m_presenter.stopped(), m_alert);
}

TEST_F(TerminalPresenterTest, withNobodyToAnswerMissingKeywordsArePrintedOnceAndRaise)
{
    const Alert missing{.messageText = u"Missing Keywords"_s, .informativeText = u"Which"_s};
    EXPECT_THROW(m_presenter.runModal(missing), ScriptingException);
    EXPECT_EQ(m_error.data(), "Missing Keywords\nWhich\n");
    m_presenter.beginSheet(m_alert); // what the scan says of being ended
    EXPECT_EQ(m_presenter.stopped(), missing);
}

TEST_F(TerminalPresenterTest, theLibraryPromptIsAnsweredWithTheLibrary)
{
    OpenPanel panel;
    panel.allowedFileTypes = {u"aplibrary"_s, u"photolibrary"_s, QString()};
    const OpenPanelResult result = m_presenter.runModal(panel);
    EXPECT_EQ(result.code, kPanelOk);
    EXPECT_EQ(result.paths, QStringList{u"/L"_s});
    EXPECT_EQ(m_error.data(), QByteArray());
}

TEST_F(TerminalPresenterTest, withNobodyToAnswerAFilePromptIsAnsweredWithNothingPicked)
{
    OpenPanel panel;
    panel.title = u"Read Access Required"_s;
    panel.message = u"Message"_s;
    const OpenPanelResult result = m_presenter.runModal(panel);
    EXPECT_EQ(result.code, kPanelOk);
    EXPECT_TRUE(result.paths.isEmpty());
    EXPECT_EQ(m_error.data(), "Read Access Required\nMessage\n");
}
