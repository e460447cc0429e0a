#include "ScanProgressView.h"

#include "ControllerFixture.h"

#include <QCoreApplication>
#include <QProgressBar>

using namespace Qt::StringLiterals;

namespace
{

class ScanProgressViewTest : public ControllerFixture
{
protected:
    void SetUp() override
    {
        m_application.setKeywords({u"Corvane Original"_s, u"Corvane Processed"_s});
        m_view = std::make_unique<ScanProgressView>(wake());
    }

    void TearDown() override { m_view.reset(); }

    QProgressBar& bar() { return *m_view->findChild<QProgressBar*>(u"progressIndicator"_s); }

    /// Whether the bar moves without an end.
    bool isBusy() { return bar().minimum() == 0 && bar().maximum() == 0; }

    ProgressIndicator& indicator() { return m_controller->progressIndicator(); }

    std::unique_ptr<ScanProgressView> m_view;
};

TEST_F(ScanProgressViewTest, theBarFollowsMaximumAndValue)
{
    indicator().setIndeterminate(false);
    indicator().setMaxValue(12);
    indicator().setDoubleValue(3);
    EXPECT_EQ(bar().maximum(), 12);
    EXPECT_EQ(bar().value(), 3);
    EXPECT_EQ(bar().text(), u"3 of 12"_s);
    indicator().setDoubleValue(0);
    EXPECT_EQ(bar().value(), 0);
    EXPECT_FALSE(bar().isTextVisible());
}

TEST_F(ScanProgressViewTest, valuesFromAWorkerAreShown)
{
    runOnWorker([this] {
        indicator().setIndeterminate(false);
        indicator().setMaxValue(214);
        indicator().setDoubleValue(97);
    });
    QCoreApplication::processEvents();
    EXPECT_EQ(bar().maximum(), 214);
    EXPECT_EQ(bar().value(), 97);
}

TEST_F(ScanProgressViewTest, aValueBeyondTheMaximumFillsTheBar)
{
    indicator().setIndeterminate(false);
    indicator().setMaxValue(3);
    indicator().setDoubleValue(9);
    EXPECT_EQ(bar().value(), 3);
    indicator().setMaxValue(1e300);
    EXPECT_GT(bar().maximum(), 1000000);
}

TEST_F(ScanProgressViewTest, withoutAScanTheBarStandsStill)
{
    ASSERT_TRUE(indicator().isIndeterminate());
    EXPECT_FALSE(isBusy());
    indicator().setIndeterminate(false);
    indicator().setMaxValue(0);
    EXPECT_FALSE(isBusy());
    EXPECT_EQ(bar().value(), 0);
}

TEST_F(ScanProgressViewTest, aScanWithoutAMaximumMovesTheBar)
{
    m_controller->selectionScan(nullptr);
    ASSERT_TRUE(m_controller->isScanning());
    indicator().setIndeterminate(true);
    EXPECT_TRUE(isBusy());
    indicator().setIndeterminate(false);
    EXPECT_FALSE(isBusy());
    indicator().setIndeterminate(true);
    waitForScans();
    EXPECT_FALSE(isBusy());
}

} // namespace
