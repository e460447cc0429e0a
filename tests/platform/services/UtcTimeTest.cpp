#include "UtcTime.h"

#include <QDateTime>

#include <gtest/gtest.h>

TEST(UtcTime, daysOfNoteAreRight)
{
    EXPECT_EQ(UtcTime::of(0), (UtcTime{1970, 1, 1, 0, 0, 0}));
    EXPECT_EQ(UtcTime::of(-1), (UtcTime{1969, 12, 31, 23, 59, 59}));
    EXPECT_EQ(UtcTime::of(951782400), (UtcTime{2000, 2, 29, 0, 0, 0}));
    EXPECT_EQ(UtcTime::of(4107542399), (UtcTime{2100, 2, 28, 23, 59, 59}));
    EXPECT_EQ(UtcTime::of(4107542400), (UtcTime{2100, 3, 1, 0, 0, 0}));
    EXPECT_EQ(UtcTime::of(2147483648), (UtcTime{2038, 1, 19, 3, 14, 8}));
}

TEST(UtcTime, isWhatQtSaysForEveryDayOfCenturies)
{
    constexpr qint64 kStep = 86400 + 3661; // so that the time of day differs too
    for (qint64 seconds = -8000000000; seconds < 8000000000; seconds += kStep) {
        const QDateTime expected = QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
        const QDate date = expected.date();
        const QTime time = expected.time();
        ASSERT_EQ(
            UtcTime::of(seconds),
            (UtcTime{
                date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second()}))
            << seconds;
    }
}
