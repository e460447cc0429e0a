#include "SensorGaps.h"

#include <QRect>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace
{

constexpr QSize kSensor(1000, 700);
constexpr int kBlack = 512;
constexpr int kWhite = 16383;

/// What a sensor measured of a grey wall, and what was lost of it.
class Measured final
{
public:
    explicit Measured(int black = kBlack)
        : m_black(black)
        , m_values(static_cast<std::size_t>(kSensor.width()) *
                   static_cast<std::size_t>(kSensor.height()))
    {
        std::mt19937 random(1);
        std::ranges::generate(m_values, [&] { return static_cast<quint16>(3000 + random() % 40); });
    }

    Measured& fill(const QRect& area, quint16 value)
    {
        for (int y = area.top(); y <= area.bottom(); ++y) {
            const auto row = m_values.begin() + std::ptrdiff_t{y} * kSensor.width();
            std::fill_n(row + area.left(), area.width(), value);
        }
        return *this;
    }

    /// Takes so many of the values for one pixel.
    Measured& combine(int channels)
    {
        m_channels = channels;
        return *this;
    }

    [[nodiscard]] bool hasGap() const
    {
        return SensorGaps::isFoundIn({.first = m_values.data(),
                                      .stride = kSensor.width(),
                                      .channels = m_channels,
                                      .size = QSize(kSensor.width() / m_channels, kSensor.height()),
                                      .black = m_black,
                                      .white = kWhite});
    }

private:
    int m_black;
    int m_channels{1};
    std::vector<quint16> m_values;
};

/// A sixteenth of the sensor's rows.
QRect rowsFrom(int first)
{
    return {0, first, kSensor.width(), kSensor.height() / 16 + 1};
}

} // namespace

TEST(SensorGapsTest, whatHasNoiseEverywhereHasNoGap)
{
    EXPECT_FALSE(Measured().hasGap());
}

TEST(SensorGapsTest, aSixteenthOfTheRowsIsAGapWhereverItBegins)
{
    for (const int first : {0, 5, 100, 333, kSensor.height() - 45}) {
        EXPECT_TRUE(Measured().fill(rowsFrom(first), 0).hasGap()) << first;
        EXPECT_TRUE(Measured(0).fill(rowsFrom(first), 0).hasGap()) << first;
        EXPECT_TRUE(Measured().fill(rowsFrom(first), 4000).hasGap()) << first;
    }
}

TEST(SensorGapsTest, aTileBelowBlackIsAGap)
{
    EXPECT_TRUE(Measured().fill({333, 111, 256, 256}, 0).hasGap());
}

TEST(SensorGapsTest, shadowsThatClipAreNoGap)
{
    EXPECT_FALSE(Measured(0).fill({300, 0, 700, 700}, 0).hasGap());
    EXPECT_FALSE(Measured().fill({300, 0, 700, 700}, kBlack).hasGap());
}

TEST(SensorGapsTest, ofCompleteColoursWholeRowsAreAGap)
{
    EXPECT_TRUE(Measured().fill(rowsFrom(100), 4000).combine(4).hasGap());
    EXPECT_FALSE(Measured().fill({300, 0, 700, 700}, 4000).combine(4).hasGap());
}

TEST(SensorGapsTest, lightThatClipsIsNoGap)
{
    EXPECT_FALSE(Measured().fill({0, 0, 1000, 500}, kWhite).hasGap());
    EXPECT_FALSE(Measured().fill({0, 0, 1000, 500}, 13000).hasGap());
}

TEST(SensorGapsTest, whatASpeckOfDustHidesIsNoGap)
{
    EXPECT_FALSE(Measured().fill({400, 300, 150, 60}, 0).hasGap());
}

TEST(SensorGapsTest, tooFewValuesTellNothing)
{
    const std::vector<quint16> values(std::size_t{64} * 64);
    EXPECT_FALSE(SensorGaps::isFoundIn(
        {.first = values.data(), .stride = 64, .channels = 1, .size = QSize(64, 64)}));
}
