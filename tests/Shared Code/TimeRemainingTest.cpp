#include "TimeRemaining.h"

#include "FakeClock.h"
#include "LogRecorder.h"
#include "QtPrinters.h"
#include "UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace
{

class TimeRemainingTest : public testing::Test
{
protected:
    TimeRemainingTest() { m_clock.advance(1000.0); }

    /// Updates the estimator and answers the text that it shows.
    static QString
    update(TimeRemaining& estimator, quint64 stage, quint64 curIdx, quint64 totalCount)
    {
        QString shown;
        estimator.update(
            stage, curIdx, totalCount, [&shown](const QString& text) { shown = text; });
        return shown;
    }

    /// Keeps the rates that were learnt, as a scan at its end.
    void store(TimeRemaining& estimator) { EXPECT_EQ(update(estimator, 4, 0, 0), u"00:00:00"_s); }

    [[nodiscard]] double rate(const QString& key) const { return m_defaults.doubleValue(key); }

    QTemporaryDir m_folder;
    FakeClock m_clock;
    LogRecorder m_log;
    UserDefaults m_defaults{m_folder.filePath(u"defaults.plist"_s)};
};

TEST_F(TimeRemainingTest, aFirstScanOfTenImagesEstimatesTwoMinutesAndTenSeconds)
{
    TimeRemaining estimator(m_defaults, m_clock);
    EXPECT_EQ(update(estimator, 0, 0, 10), u"00:02:10"_s); // 10 + 10 + 10 + 100 s
}

TEST_F(TimeRemainingTest, storedRatesDecideTheEstimateOfEveryStage)
{
    m_defaults.setDouble(u"estStartupRate"_s, 4.0);
    m_defaults.setDouble(u"estDataLoadingRate"_s, 2.0);
    m_defaults.setDouble(u"estAlbumLoadingRate"_s, 0.5);
    m_defaults.setDouble(u"estConversionRate"_s, 0.25);
    const auto first = [&](quint64 stage, quint64 index) {
        TimeRemaining estimator(m_defaults, m_clock);
        return update(estimator, stage, index, 100);
    };
    EXPECT_EQ(first(0, 0), u"00:11:15"_s);  // 25 + 50 + 200 + 400 = 675 s
    EXPECT_EQ(first(0, 60), u"00:11:00"_s); // 10 + 50 + 200 + 400 = 660 s
    EXPECT_EQ(first(1, 50), u"00:10:25"_s); // 25 + 200 + 400 = 625 s
    EXPECT_EQ(first(2, 99), u"00:06:42"_s); // 2 + 400 s
    EXPECT_EQ(first(3, 1), u"00:06:36"_s);  // 99 / 0.25 = 396 s
    EXPECT_EQ(first(4, 100), u"00:00:00"_s);
}

TEST_F(TimeRemainingTest, aStoredRateOfZeroCountsAsNone)
{
    m_defaults.setDouble(u"estConversionRate"_s, 0.0);
    TimeRemaining estimator(m_defaults, m_clock);
    EXPECT_EQ(update(estimator, 3, 0, 5), u"00:00:50"_s);
}

TEST_F(TimeRemainingTest, theEarlyStagesLearnOnceFromAllTheirItems)
{
    TimeRemaining estimator(m_defaults, m_clock);
    update(estimator, 0, 0, 10);
    m_clock.advance(5.0);
    update(estimator, 0, 10, 10); // (1 x 1.0 + 10 / 5) / 11 = 3 / 11
    update(estimator, 1, 0, 10);
    m_clock.advance(2.5);
    update(estimator, 1, 10, 10); // (1 x 1.0 + 10 / 2.5) / 11 = 5 / 11
    update(estimator, 2, 0, 10);
    m_clock.advance(0.5);
    update(estimator, 2, 10, 10); // (1 x 1.0 + 10 / 0.5) / 11 = 21 / 11
    store(estimator);
    EXPECT_DOUBLE_EQ(rate(u"estStartupRate"_s), 3.0 / 11.0);
    EXPECT_DOUBLE_EQ(rate(u"estDataLoadingRate"_s), 5.0 / 11.0);
    EXPECT_DOUBLE_EQ(rate(u"estAlbumLoadingRate"_s), 21.0 / 11.0);
    EXPECT_DOUBLE_EQ(rate(u"estConversionRate"_s), 0.1);
}

TEST_F(TimeRemainingTest, conversionLearnsARunningMeanFromTheSecondImageOn)
{
    TimeRemaining estimator(m_defaults, m_clock);
    update(estimator, 2, 3, 3);
    m_clock.advance(1000.0);
    // The index falls from 3 to 0: nothing is learnt.
    EXPECT_EQ(update(estimator, 3, 0, 3), u"00:00:30"_s);
    m_clock.advance(2.0);
    EXPECT_EQ(update(estimator, 3, 1, 3), u"00:00:20"_s); // then (1 x 0.1 + 1 / 2) / 2 = 0.3
    m_clock.advance(4.0);
    EXPECT_EQ(update(estimator, 3, 2, 3), u"00:00:03"_s); // then (2 x 0.3 + 1 / 4) / 3 = 0.85 / 3
    m_clock.advance(100.0);
    store(estimator); // the last image teaches nothing
    EXPECT_DOUBLE_EQ(rate(u"estConversionRate"_s), 0.85 / 3.0);
}

TEST_F(TimeRemainingTest, aCallForTheSameIndexLearnsNothingButMovesTheTime)
{
    TimeRemaining estimator(m_defaults, m_clock);
    update(estimator, 3, 0, 3);
    m_clock.advance(50.0);
    update(estimator, 3, 0, 3); // as after a failed conversion
    m_clock.advance(2.0);
    update(estimator, 3, 1, 3);
    store(estimator);
    EXPECT_DOUBLE_EQ(rate(u"estConversionRate"_s), (0.1 + 1.0 / 2.0) / 2.0);
}

TEST_F(TimeRemainingTest, theTextIsShownBeforeAnythingIsLearnt)
{
    TimeRemaining estimator(m_defaults, m_clock);
    update(estimator, 0, 0, 10);
    m_clock.advance(5.0);
    const auto refuse = [](const QString& text) {
        EXPECT_EQ(text, u"00:02:00"_s); // 0 + 10 + 10 + 100 s
        throw std::runtime_error("nobody looks");
    };
    EXPECT_THROW(estimator.update(0, 10, 10, refuse), std::runtime_error);
    store(estimator);
    EXPECT_DOUBLE_EQ(rate(u"estStartupRate"_s), 1.0);
}

TEST_F(TimeRemainingTest, timeAndIndexMoveOnlyAfterTheTextWasShown)
{
    TimeRemaining estimator(m_defaults, m_clock);
    update(estimator, 0, 0, 10);
    m_clock.advance(5.0);
    const auto refuse = [](const QString&) { throw std::runtime_error("nobody looks"); };
    EXPECT_THROW(estimator.update(0, 10, 10, refuse), std::runtime_error);
    m_clock.advance(5.0);
    update(estimator, 0, 10, 10); // (1 x 1.0 + 10 / 10) / 11
    store(estimator);
    EXPECT_DOUBLE_EQ(rate(u"estStartupRate"_s), 2.0 / 11.0);
}

TEST_F(TimeRemainingTest, nothingIsStoredBeforeTheEnd)
{
    TimeRemaining estimator(m_defaults, m_clock);
    update(estimator, 0, 0, 10);
    m_clock.advance(5.0);
    update(estimator, 0, 10, 10);
    EXPECT_FALSE(m_defaults.value(u"estStartupRate"_s).isValid());
    EXPECT_FALSE(m_defaults.value(u"estConversionRate"_s).isValid());
}

TEST_F(TimeRemainingTest, theNextEstimatorBeginsWithWhatWasLearnt)
{
    m_defaults.setDouble(u"estConversionRate"_s, 0.5);
    TimeRemaining estimator(m_defaults, m_clock);
    EXPECT_EQ(update(estimator, 3, 0, 30), u"00:01:00"_s);
}

TEST_F(TimeRemainingTest, noItemsAtAllTakeNoTime)
{
    TimeRemaining estimator(m_defaults, m_clock);
    EXPECT_EQ(update(estimator, 0, 0, 0), u"00:00:00"_s);
}

TEST_F(TimeRemainingTest, anUnknownStageIsLoggedAndMovesTimeAndIndex)
{
    TimeRemaining estimator(m_defaults, m_clock);
    update(estimator, 3, 0, 10);
    m_clock.advance(100.0);
    EXPECT_EQ(update(estimator, 7, 4, 10), u"00:00:00"_s);
    EXPECT_EQ(m_log.entries(), QStringList{u"Unknown stage for estTimeRemaining"_s});
    m_clock.advance(2.0);
    update(estimator, 3, 5, 10); // (5 x 0.1 + 1 / 2) / 6
    store(estimator);
    EXPECT_DOUBLE_EQ(rate(u"estConversionRate"_s), 1.0 / 6.0);
}

TEST_F(TimeRemainingTest, twoCallsWithinOneTickMakeTheRateInfinite)
{
    TimeRemaining estimator(m_defaults, m_clock);
    update(estimator, 0, 0, 10);
    update(estimator, 0, 10, 10);
    EXPECT_EQ(update(estimator, 0, 0, 10), u"00:02:00"_s); // start-up takes no time any more
}

TEST_F(TimeRemainingTest, anIndexBeyondTheTotalWrapsAround)
{
    // 10 - 11 in 64 bits without sign is 2^64 - 1; at 1000 items a second 5124095576030 hours.
    m_defaults.setDouble(u"estConversionRate"_s, 1000.0);
    TimeRemaining estimator(m_defaults, m_clock);
    EXPECT_TRUE(update(estimator, 3, 11, 10).startsWith(u"5124095576030:"_s));
}

TEST_F(TimeRemainingTest, hoursStayExactWhereTheSecondsNoLongerFit)
{
    // (2^64 - 1) / 0.1 seconds: too many for 64 bits; their minutes and hours are not.
    TimeRemaining estimator(m_defaults, m_clock);
    EXPECT_TRUE(update(estimator, 3, 11, 10).startsWith(u"51240955760304312:"_s));
    EXPECT_EQ(TimeRemaining::text(18446744073709551616.0 * 10.0), u"51240955760304312:12:15"_s);
    EXPECT_TRUE(TimeRemaining::text(1e300).startsWith(u"18446744073709551615:"_s));
}

TEST_F(TimeRemainingTest, hoursAreNotLimitedToTwoDigits)
{
    EXPECT_EQ(TimeRemaining::text(360000.0), u"100:00:00"_s);
    EXPECT_EQ(TimeRemaining::text(3600.0 * 12345.0 + 61.9), u"12345:01:01"_s);
    TimeRemaining estimator(m_defaults, m_clock);
    EXPECT_EQ(update(estimator, 3, 0, 36000), u"100:00:00"_s);
}

TEST_F(TimeRemainingTest, partsOfASecondAreCut)
{
    EXPECT_EQ(TimeRemaining::text(0.999), u"00:00:00"_s);
    EXPECT_EQ(TimeRemaining::text(59.999), u"00:00:59"_s);
    EXPECT_EQ(TimeRemaining::text(3599.5), u"00:59:59"_s);
}

TEST_F(TimeRemainingTest, whatIsNoDurationReadsAsNone)
{
    EXPECT_EQ(TimeRemaining::text(-5.0), u"00:00:00"_s);
    EXPECT_EQ(TimeRemaining::text(std::numeric_limits<double>::infinity()), u"00:00:00"_s);
    EXPECT_EQ(TimeRemaining::text(std::numeric_limits<double>::quiet_NaN()), u"00:00:00"_s);
}

} // namespace
