#include "Clock.h"

#include <QDateTime>

#include <gtest/gtest.h>

namespace
{

TEST(Clock, countsSecondsSince2001)
{
    const double before =
        static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0 - kSecondsFrom1970To2001;
    const double now = SystemClock().now();
    EXPECT_GE(now, before - 0.002);
    EXPECT_LT(now, before + 60.0);
}

TEST(Clock, sleepsForTheTimeAskedForAndNotAtAllForNone)
{
    SystemClock clock;
    const double before = clock.now();
    clock.sleep(0.02);
    EXPECT_GE(clock.now() - before, 0.015);
    clock.sleep(0.0);
    clock.sleep(-100.0);
}

} // namespace
