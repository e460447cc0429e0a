#include "NumberValue.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Qt::StringLiterals;

namespace
{

TEST(NumberValue, integersAreTheIntegerPart)
{
    EXPECT_EQ(NumberValue::integer(7.9), 7);
    EXPECT_EQ(NumberValue::integer(-7.9), -7);
    EXPECT_EQ(NumberValue::integer(1.5F), 1);
    EXPECT_EQ(NumberValue::integer(42), 42);
    EXPECT_EQ(NumberValue::integer(true), 1);
    EXPECT_EQ(NumberValue::integer(QVariant()), 0);
}

TEST(NumberValue, integersOfTextAreItsStart)
{
    EXPECT_EQ(NumberValue::integer(u"7x"_s), 7);
    EXPECT_EQ(NumberValue::integer(u"  +12 px"_s), 12);
    EXPECT_EQ(NumberValue::integer(u"-3.9"_s), -3);
    EXPECT_EQ(NumberValue::integer(u"abc"_s), 0);
    EXPECT_EQ(NumberValue::integer(u""_s), 0);
}

TEST(NumberValue, whatIsTooLargeBecomesTheNearestInteger)
{
    constexpr qint64 kMost = std::numeric_limits<qint64>::max();
    constexpr qint64 kLeast = std::numeric_limits<qint64>::min();
    EXPECT_EQ(NumberValue::integer(1e300), kMost);
    EXPECT_EQ(NumberValue::integer(-1e300), kLeast);
    EXPECT_EQ(NumberValue::integer(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(NumberValue::integer(u"99999999999999999999"_s), kMost);
    EXPECT_EQ(NumberValue::integer(u"-99999999999999999999"_s), kLeast);
    EXPECT_EQ(NumberValue::integer(std::numeric_limits<quint64>::max()), kMost);
}

TEST(NumberValue, realsOfTextAreItsStart)
{
    EXPECT_DOUBLE_EQ(NumberValue::real(u" 0.8x"_s), 0.8);
    EXPECT_DOUBLE_EQ(NumberValue::real(u"+1e3"_s), 1000.0);
    EXPECT_DOUBLE_EQ(NumberValue::real(u"none"_s), 0.0);
    EXPECT_DOUBLE_EQ(NumberValue::real(3), 3.0);
    EXPECT_DOUBLE_EQ(NumberValue::real(QVariant()), 0.0);
}

TEST(NumberValue, switchesAreNumbersThatAreNotZeroAndWordsThatAgree)
{
    for (const QVariant& yes : {QVariant(true),
                                QVariant(1),
                                QVariant(0.5),
                                QVariant(-1),
                                QVariant(u"YES"_s),
                                QVariant(u" true"_s),
                                QVariant(u"+007"_s)}) {
        EXPECT_TRUE(NumberValue::boolean(yes)) << qPrintable(yes.toString());
    }
    for (const QVariant& no : {QVariant(false),
                               QVariant(0),
                               QVariant(0.0),
                               QVariant(),
                               QVariant(u"NO"_s),
                               QVariant(u"000"_s),
                               QVariant(u""_s),
                               QVariant(u"x1"_s)}) {
        EXPECT_FALSE(NumberValue::boolean(no)) << qPrintable(no.toString());
    }
}

TEST(NumberValue, twoDecimalsAreThoseOfPrintf)
{
    EXPECT_EQ(NumberValue::withTwoDecimals(0.8), u"0.80"_s);
    EXPECT_EQ(NumberValue::withTwoDecimals(-12.345), u"-12.35"_s);
    EXPECT_EQ(NumberValue::withTwoDecimals(0.625), u"0.62"_s) << "a tie goes to the even text";
    EXPECT_EQ(NumberValue::withTwoDecimals(0.375), u"0.38"_s);
    EXPECT_EQ(NumberValue::withTwoDecimals(0.0), u"0.00"_s);
    EXPECT_EQ(NumberValue::withTwoDecimals(1e300).size(), 304);
}

} // namespace
