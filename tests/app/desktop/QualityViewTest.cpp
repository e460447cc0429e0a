#include "QualityView.h"

#include "ControllerFixture.h"

#include <QLabel>
#include <QSlider>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

class QualityViewTest : public ControllerFixture
{
protected:
    void show(double stored)
    {
        m_defaults.setDouble(u"JpegQuality"_s, stored);
        m_view = std::make_unique<QualityView>(wake());
    }

    QSlider& slider() { return *m_view->findChild<QSlider*>(u"compressionFactor"_s); }

    QString number() { return m_view->findChild<QLabel*>(u"compressionFactorText"_s)->text(); }

    void TearDown() override { m_view.reset(); }

    std::unique_ptr<QualityView> m_view;
};

TEST_F(QualityViewTest, showingAQualityLeavesItAsItIs)
{
    show(0.625);
    EXPECT_EQ(slider().value(), 63);
    EXPECT_EQ(number(), u"0.62"_s);
    EXPECT_EQ(m_controller->compressionFactor(), 0.625);
    EXPECT_EQ(m_defaults.doubleValue(u"JpegQuality"_s), 0.625);
    m_controller->setCompressionFactor(0.305);
    EXPECT_EQ(m_controller->compressionFactor(), 0.305);
    EXPECT_EQ(m_defaults.doubleValue(u"JpegQuality"_s), 0.305);
}

TEST_F(QualityViewTest, aMovedSliderSetsTheQuality)
{
    show(0.625);
    QTest::keyClick(&slider(), Qt::Key_Right);
    EXPECT_EQ(m_controller->compressionFactor(), 0.64);
    EXPECT_EQ(number(), u"0.64"_s);
    QTest::keyClick(&slider(), Qt::Key_Home);
    EXPECT_EQ(m_controller->compressionFactor(), 0.0);
    QTest::keyClick(&slider(), Qt::Key_End);
    EXPECT_EQ(m_controller->compressionFactor(), 1.0);
    EXPECT_EQ(number(), u"1.00"_s);
}

TEST_F(QualityViewTest, theSliderFollowsTheQuality)
{
    show(0.8);
    m_controller->setCompressionFactor(0.3);
    EXPECT_EQ(slider().value(), 30);
    EXPECT_EQ(number(), u"0.30"_s);
}

TEST_F(QualityViewTest, aQualityOutOfRangeIsShownAtTheEndAndKept)
{
    show(1.7);
    EXPECT_EQ(slider().value(), 100);
    EXPECT_EQ(m_controller->compressionFactor(), 1.7);
    m_controller->setCompressionFactor(-1.0);
    EXPECT_EQ(slider().value(), 0);
}

TEST_F(QualityViewTest, aDragIsShownAtOnceAndStoredAtItsEnd)
{
    show(0.8);
    slider().setSliderDown(true);
    slider().setSliderPosition(40);
    EXPECT_EQ(number(), u"0.40"_s);
    EXPECT_EQ(m_controller->compressionFactor(), 0.8);
    slider().setSliderDown(false);
    EXPECT_EQ(m_controller->compressionFactor(), 0.4);
    EXPECT_EQ(number(), u"0.40"_s);
}

TEST_F(QualityViewTest, aDragBackToTheStartChangesNothing)
{
    show(0.625);
    slider().setSliderDown(true);
    slider().setSliderPosition(40);
    slider().setSliderPosition(63);
    slider().setSliderDown(false);
    EXPECT_EQ(m_controller->compressionFactor(), 0.625);
    EXPECT_EQ(number(), u"0.62"_s);
}

} // namespace
