#include "ProgressIndicator.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

TEST(ProgressIndicator, isIndeterminateUpToAHundredAtFirst)
{
    const ProgressIndicator indicator;
    EXPECT_TRUE(indicator.isIndeterminate());
    EXPECT_EQ(indicator.maxValue(), 100.0);
    EXPECT_EQ(indicator.doubleValue(), 0.0);
}

TEST(ProgressIndicator, announcesWhatWasSet)
{
    ProgressIndicator indicator;
    QStringList announced;
    QObject::connect(&indicator, &ProgressIndicator::maxValueChanged, [&](double value) {
        announced.append(u"max %1"_s.arg(value));
    });
    QObject::connect(&indicator, &ProgressIndicator::doubleValueChanged, [&](double value) {
        announced.append(u"value %1"_s.arg(value));
    });
    QObject::connect(&indicator, &ProgressIndicator::indeterminateChanged, [&](bool value) {
        announced.append(value ? u"indeterminate"_s : u"determinate"_s);
    });
    indicator.setIndeterminate(false);
    indicator.setMaxValue(12.0);
    indicator.setDoubleValue(3.5);
    EXPECT_EQ(announced, (QStringList{u"determinate"_s, u"max 12"_s, u"value 3.5"_s}));
    EXPECT_FALSE(indicator.isIndeterminate());
    EXPECT_EQ(indicator.maxValue(), 12.0);
    EXPECT_EQ(indicator.doubleValue(), 3.5);
}

TEST(ProgressIndicator, anAnimationRunsUntilItIsStopped)
{
    ProgressIndicator indicator;
    EXPECT_FALSE(indicator.isAnimating());
    QList<bool> announced;
    QObject::connect(&indicator, &ProgressIndicator::animatingChanged, [&](bool animating) {
        announced.append(animating);
    });
    indicator.startAnimation();
    EXPECT_TRUE(indicator.isAnimating());
    indicator.stopAnimation();
    EXPECT_FALSE(indicator.isAnimating());
    EXPECT_EQ(announced, (QList<bool>{true, false}));
}

} // namespace
