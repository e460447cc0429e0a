#include "TerminalPresenter.h"

#include "Console.h"
#include "Interruption.h"
#include "Scripting.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <unistd.h>

#include <array>

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

namespace
{

/// A person at a terminal, whose answers are typed before they are asked for.
class AnsweringPresenterTest : public TerminalPresenterTest
{
public:
    ~AnsweringPresenterTest() override
    {
        ::close(m_ends[0]);
        endInput();
    }

protected:
    AnsweringPresenterTest() { EXPECT_EQ(::pipe(m_ends.data()), 0); }

    void type(const QByteArray& text)
    {
        EXPECT_EQ(::write(m_ends[1], text.constData(), static_cast<size_t>(text.size())),
                  text.size());
    }

    void endInput()
    {
        if (m_ends[1] >= 0) {
            ::close(m_ends[1]);
            m_ends[1] = -1;
        }
    }

    [[nodiscard]] TerminalPresenter& presenter()
    {
        TerminalFacts facts;
        facts.canAsk = true;
        facts.inputDescriptor = m_ends[0];
        m_terminal.emplace(m_output, m_error, facts);
        return m_asking.emplace(*m_terminal, m_interruption, u"/L"_s, Summary::Output);
    }

    const Alert m_missing{.messageText = u"Missing Keywords"_s, .informativeText = u"Which"_s};

private:
    std::array<int, 2> m_ends{-1, -1};
    std::optional<Console> m_terminal;
    std::optional<TerminalPresenter> m_asking;
};

} // namespace

TEST_F(AnsweringPresenterTest, aModalAlertWaitsForEnter)
{
    TerminalPresenter& asking = presenter();
    type("\n");
    asking.runModal(m_missing);
    EXPECT_TRUE(m_error.data().startsWith("Missing Keywords\nWhich\n"));
    EXPECT_EQ(asking.stopped(), std::nullopt) << "an answered question stopped nothing";
}

TEST_F(AnsweringPresenterTest, atTheEndOfTheInputMissingKeywordsRaise)
{
    TerminalPresenter& asking = presenter();
    endInput();
    EXPECT_THROW(asking.runModal(m_missing), ScriptingException);
    EXPECT_EQ(asking.stopped(), m_missing);
}

TEST_F(AnsweringPresenterTest, anInterruptionEndsTheWaiting)
{
    TerminalPresenter& asking = presenter();
    m_interruption.request();
    EXPECT_THROW(asking.runModal(m_missing), ScriptingException);
}

TEST_F(AnsweringPresenterTest, aFilePromptWaitsForEnterAndPicksNothing)
{
    TerminalPresenter& asking = presenter();
    type("\n");
    OpenPanel panel;
    panel.title = u"Read Access Required"_s;
    const OpenPanelResult result = asking.runModal(panel);
    EXPECT_EQ(result.code, kPanelOk);
    EXPECT_TRUE(result.paths.isEmpty());
}
