#include "Console.h"

#include "Interruption.h"
#include "MessageLog.h"
#include "SystemLog.h"

#include <QBuffer>
#include <QFile>

#include <gtest/gtest.h>

#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

class ConsoleTest : public testing::Test
{
protected:
    ConsoleTest()
    {
        m_output.open(QIODevice::WriteOnly);
        m_error.open(QIODevice::WriteOnly);
    }

    QBuffer m_output;
    QBuffer m_error;
    Interruption m_interruption;
};

/// A pseudo-terminal whose far end a test types on.
class PseudoTerminal final
{
    Q_DISABLE_COPY_MOVE(PseudoTerminal)
public:
    PseudoTerminal() { m_open = openpty(&m_far, &m_near, nullptr, nullptr, nullptr) == 0; }

    ~PseudoTerminal()
    {
        if (m_open) {
            close(m_far);
            close(m_near);
        }
    }

    [[nodiscard]] bool isOpen() const { return m_open; }

    [[nodiscard]] int nearEnd() const { return m_near; }

    [[nodiscard]] int farEnd() const { return m_far; }

    void type(const QByteArray& text) const
    {
        EXPECT_EQ(write(m_far, text.constData(), static_cast<std::size_t>(text.size())),
                  text.size());
    }

private:
    int m_far{-1};
    int m_near{-1};
    bool m_open{false};
};

TerminalFacts redrawing()
{
    TerminalFacts facts;
    facts.isTerminal = true;
    facts.canRedraw = true;
    return facts;
}

} // namespace

TEST_F(ConsoleTest, resultsAndMessagesTakeDifferentStreams)
{
    Console console(m_output, m_error, {});
    console.print(u"result"_s);
    console.say(u"message"_s);
    EXPECT_EQ(m_output.data(), "result\n");
    EXPECT_EQ(m_error.data(), "message\n");
}

TEST_F(ConsoleTest, textForPeopleCannotSteerTheTerminalAndDocumentsAreLeftAlone)
{
    Console console(m_output, m_error, {});
    console.print(u"a\u001b]0;x\u0007b"_s);
    console.printDocument("\"\\u2066\"\x01\n");
    EXPECT_EQ(m_output.data(), "a]0;xb\n\"\\u2066\"\x01\n");
}

TEST_F(ConsoleTest, withoutATerminalNoProgressIsDrawn)
{
    Console console(m_output, m_error, {});
    console.showStatus(u"Converting"_s);
    console.clearStatus();
    EXPECT_EQ(m_error.data(), QByteArray());
}

TEST_F(ConsoleTest, everyLineErasesTheProgressLineFirst)
{
    Console console(m_output, m_error, redrawing());
    console.showStatus(u"one"_s);
    console.say(u"message"_s);
    console.showStatus(u"two"_s);
    console.print(u"result"_s);
    EXPECT_EQ(m_error.data(), "one\r\x1b[Kmessage\ntwo\r\x1b[K");
    EXPECT_EQ(m_output.data(), "result\n");
}

TEST_F(ConsoleTest, logLinesEraseTheProgressLineToo)
{
    Console console(m_output, m_error, redrawing());
    {
        const MessageLog log(console);
        console.showStatus(u"one"_s);
        systemLog(u"iPhoto Version 9.6.1"_s);
        qDebug("noise of a library");
    }
    EXPECT_EQ(m_error.data(), "one\r\x1b[KiPhoto Version 9.6.1\n");
}

TEST_F(ConsoleTest, onlyThisProgramsOwnEntriesGoToTheJournal)
{
    static QStringList journal;
    journal.clear();
    Console console(m_output, m_error, {});
    {
        const MessageLog log(console, [](const QString& entry) { journal += entry; });
        systemLog(u"iPhoto Version 9.6.1"_s);
        qWarning("a library's worry");
    }
    EXPECT_EQ(journal, QStringList{u"iPhoto Version 9.6.1"_s});
    EXPECT_EQ(m_error.data(), "iPhoto Version 9.6.1\na library's worry\n");
}

TEST_F(ConsoleTest, aReaderThatHasSeenEnoughIsNoFailure)
{
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    QFile output;
    ASSERT_TRUE(output.open(fdopen(ends[1], "w"), QIODevice::WriteOnly, QFile::AutoCloseHandle));
    Console console(output, m_error, {});
    console.print(u"read"_s);
    ASSERT_EQ(close(ends[0]), 0);
    console.print(u"not read"_s);
    console.print(QString(100000, u'x'));
    EXPECT_FALSE(console.hasFailed());
}

TEST_F(ConsoleTest, aFullDiskIsAFailure)
{
    QFile output(u"/dev/full"_s);
    ASSERT_TRUE(output.open(QIODevice::WriteOnly));
    Console console(output, m_error, {});
    console.print(u"lost"_s);
    EXPECT_TRUE(console.hasFailed());
}

TEST_F(ConsoleTest, outputThatCannotBeWrittenIsNoticed)
{
    m_output.close();
    Console console(m_output, m_error, {});
    EXPECT_FALSE(console.hasFailed());
    console.print(u"lost"_s);
    EXPECT_TRUE(console.hasFailed());
}

TEST_F(ConsoleTest, anAnswerIsReadFromTheTerminal)
{
    const PseudoTerminal terminal;
    ASSERT_TRUE(terminal.isOpen());
    TerminalFacts facts = redrawing();
    facts.canAsk = true;
    facts.inputDescriptor = terminal.nearEnd();
    Console console(m_output, m_error, facts);
    terminal.type(" yes \nmore\n");
    EXPECT_EQ(console.readLine(m_interruption), u"yes"_s);
    EXPECT_EQ(console.readLine(m_interruption), u"more"_s);
    terminal.type("\x04"); // the end of the input
    EXPECT_EQ(console.readLine(m_interruption), std::nullopt);
}

TEST_F(ConsoleTest, aRequestToStopEndsAQuestion)
{
    const PseudoTerminal terminal;
    ASSERT_TRUE(terminal.isOpen());
    TerminalFacts facts;
    facts.canAsk = true;
    facts.inputDescriptor = terminal.nearEnd();
    Console console(m_output, m_error, facts);
    m_interruption.request();
    EXPECT_EQ(console.readLine(m_interruption), std::nullopt);
}

TEST_F(ConsoleTest, theWidthIsTheTerminalsOwn)
{
    const PseudoTerminal terminal;
    ASSERT_TRUE(terminal.isOpen());
    TerminalFacts facts;
    facts.errorDescriptor = terminal.nearEnd();
    const Console console(m_output, m_error, facts);
    EXPECT_EQ(console.columns(), 80); // a new one has no width yet
    const winsize size{.ws_row = 24, .ws_col = 132, .ws_xpixel = 0, .ws_ypixel = 0};
    ASSERT_EQ(ioctl(terminal.farEnd(), TIOCSWINSZ, &size), 0);
    EXPECT_EQ(console.columns(), 132);
}
