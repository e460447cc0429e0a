#include "CareReport.h"

#include "Mnemonics.h"
#include "WholeTexts.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

using Stage = CareProgress::Stage;

class CareReportTest : public testing::Test
{
protected:
    void SetUp() override { m_report.show(); }

    template <typename Widget>
    Widget& part(const QString& name)
    {
        auto* const found = m_report.findChild<Widget*>(name);
        EXPECT_NE(found, nullptr) << name.toStdString();
        return *found;
    }

    QPushButton& button(const QString& name) { return part<QPushButton>(name); }

    QString text(const QString& name) { return part<QLabel>(name).text(); }

    [[nodiscard]] static CareReport::Outcome findings()
    {
        return {.mood = CareReport::Mood::Bad,
                .heading = u"2 things differ."_s,
                .text = u"1 can be mended."_s,
                .sections = {{u"Can be mended:"_s,
                              {{u"This sidecar is missing."_s, u"Database/A.apmaster"_s}}},
                             {u"Empty:"_s, {}},
                             {u"Needs a choice of yours:"_s, {{{}, u"Masters/a  b\nc.jpg"_s}}}},
                .offer = u"&Repair…"_s};
    }

    CareReport m_report;
};

TEST_F(CareReportTest, workIsShownWithItsStageAndHowMuchIsDone)
{
    m_report.beginWork(u"Verifying…"_s, CareReport::Stopping::Possible);
    EXPECT_EQ(text(u"careHeading"_s), u"Verifying…"_s);
    auto& bar = part<QProgressBar>(u"careProgress"_s);
    EXPECT_TRUE(bar.isVisible());
    m_report.showProgress({.stage = Stage::Databases});
    EXPECT_EQ(text(u"careText"_s), u"Looking through the databases…"_s);
    EXPECT_EQ(bar.maximum(), 0) << "it is not known how long this takes";
    m_report.showProgress({Stage::Sidecars, 50000, 100000});
    EXPECT_TRUE(text(u"careText"_s).endsWith(u" 50000 of 100000"_s)) << "in the C locale";
    EXPECT_EQ(bar.value() * 2, bar.maximum());
    EXPECT_FALSE(button(u"closeReport"_s).isVisible());
    expectNothingIsCutOff(m_report);
}

TEST_F(CareReportTest, stopIsAskedForOnceAndTheReportStaysUntilTheOutcome)
{
    const QSignalSpy stops(&m_report, &CareReport::stopRequested);
    m_report.beginWork(u"Verifying…"_s, CareReport::Stopping::Possible);
    QTest::mouseClick(&button(u"stopCare"_s), Qt::LeftButton);
    EXPECT_EQ(text(u"careText"_s), u"Stopping…"_s);
    EXPECT_FALSE(button(u"stopCare"_s).isEnabled());
    m_report.showProgress({.stage = Stage::Files});
    EXPECT_EQ(text(u"careText"_s), u"Stopping…"_s) << "what came in before the end";
    m_report.close();
    EXPECT_EQ(stops.count(), 1);
    EXPECT_TRUE(m_report.isVisible());
    m_report.showOutcome({.heading = u"Stopped"_s});
    m_report.close();
    EXPECT_FALSE(m_report.isVisible());
}

TEST_F(CareReportTest, closingTheWindowAsksForAStopToo)
{
    const QSignalSpy stops(&m_report, &CareReport::stopRequested);
    m_report.beginWork(u"Verifying…"_s, CareReport::Stopping::Possible);
    QTest::keyClick(&m_report, Qt::Key_Escape);
    EXPECT_EQ(stops.count(), 1);
}

TEST_F(CareReportTest, whatMustNotBeCutOffCannotBeStopped)
{
    const QSignalSpy stops(&m_report, &CareReport::stopRequested);
    m_report.beginWork(u"Restoring…"_s, CareReport::Stopping::Impossible);
    EXPECT_FALSE(button(u"stopCare"_s).isEnabled());
    EXPECT_FALSE(text(u"careText"_s).isEmpty()) << "it is said";
    m_report.close();
    EXPECT_TRUE(m_report.isVisible());
    EXPECT_EQ(stops.count(), 0);
}

TEST_F(CareReportTest, anOutcomeIsListedSectionBySectionAndCopied)
{
    m_report.showOutcome(findings());
    const QString wanted = u"Can be mended:\n"
                           "• This sidecar is missing.\n"
                           "   Database/A.apmaster\n"
                           "\n"
                           "Needs a choice of yours:\n"
                           "• Masters/a  b\uFFFDc.jpg"_s;
    EXPECT_EQ(part<QPlainTextEdit>(u"careList"_s).toPlainText(), wanted);
    QTest::mouseClick(&button(u"copyFindings"_s), Qt::LeftButton);
    EXPECT_EQ(QApplication::clipboard()->text(), wanted);
    expectNothingIsCutOff(m_report);
}

TEST_F(CareReportTest, anOutcomeWithoutAListShowsNeitherListNorCopy)
{
    m_report.showOutcome(findings());
    const int tall = m_report.height();
    m_report.showOutcome({.heading = u"All agrees."_s});
    EXPECT_FALSE(part<QPlainTextEdit>(u"careList"_s).isVisible());
    EXPECT_FALSE(button(u"copyFindings"_s).isVisible());
    EXPECT_FALSE(button(u"takeOffer"_s).isVisible());
    EXPECT_LT(m_report.height(), tall);
    EXPECT_EQ(m_report.focusWidget(), &button(u"closeReport"_s));
    expectNothingIsCutOff(m_report);
}

TEST_F(CareReportTest, whatCannotBeDoneNowIsDisabledAndSaysWhy)
{
    const QSignalSpy taken(&m_report, &CareReport::offerTaken);
    m_report.showOutcome(findings());
    m_report.setOfferEnabled(false, u"A scan is running."_s);
    EXPECT_FALSE(button(u"takeOffer"_s).isEnabled());
    EXPECT_TRUE(part<QLabel>(u"whyNotOffered"_s).isVisible());
    EXPECT_EQ(text(u"whyNotOffered"_s), u"A scan is running."_s);
    m_report.setOfferEnabled(true);
    EXPECT_FALSE(part<QLabel>(u"whyNotOffered"_s).isVisible());
    QTest::mouseClick(&button(u"takeOffer"_s), Qt::LeftButton);
    EXPECT_EQ(taken.count(), 1);
}

TEST_F(CareReportTest, noTwoOfItsButtonsShareAMnemonic)
{
    m_report.showOutcome(findings());
    QStringList letters = mnemonicsOf(m_report);
    EXPECT_EQ(letters.size(), 3);
    EXPECT_EQ(letters.removeDuplicates(), 0) << letters.join(u' ').toStdString();
}

} // namespace
