#include "ScanProgress.h"

#include "Console.h"
#include "ControllerFixture.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>

using namespace Qt::StringLiterals;

namespace
{

class ScanProgressTest : public ControllerFixture
{
protected:
    void SetUp() override
    {
        m_output.open(QIODevice::WriteOnly);
        m_error.open(QIODevice::WriteOnly);
        m_facts.isTerminal = true;
        m_facts.canRedraw = true;
        m_facts.columns = 90;
        m_console = std::make_unique<Console>(m_output, m_error, m_facts);
        m_progress = std::make_unique<ScanProgress>(wake(), *m_console);
        m_controller->setNowProcessing(true);
    }

    void TearDown() override { m_progress.reset(); }

    /// What is drawn next.
    std::string drawn()
    {
        const qsizetype before = m_error.data().size();
        QElapsedTimer waiting;
        waiting.start();
        while (m_error.data().size() == before && waiting.elapsed() < 10000) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return m_error.data().mid(before).replace("\r\x1b[K", "").toStdString();
    }

    QBuffer m_output;
    QBuffer m_error;
    TerminalFacts m_facts;
    std::unique_ptr<Console> m_console;
    std::unique_ptr<ScanProgress> m_progress;
};

} // namespace

TEST_F(ScanProgressTest, whileNothingIsCountedTheActivityAloneIsShown)
{
    m_controller->setTimeRemaining(u"00:00:17"_s);
    EXPECT_EQ(drawn(), "Loading Data  00:00:17");
    m_controller->statusLabel().setStringValue(u"Loading Data"_s);
    m_controller->progressIndicator().setMaxValue(12);
    EXPECT_EQ(drawn(), "Loading Data  00:00:17");
}

TEST_F(ScanProgressTest, whatIsCountedIsShownWithItsTotal)
{
    ProgressIndicator& bar = m_controller->progressIndicator();
    bar.setIndeterminate(false);
    bar.setMaxValue(12);
    bar.setDoubleValue(3);
    m_controller->statusLabel().setStringValue(u"Converting"_s);
    EXPECT_EQ(drawn(), "Converting  [######------------------]  3/12");
}
