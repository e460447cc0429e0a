#include "SensorBreaks.h"

#include <QRect>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

namespace
{

constexpr QSize kExposed(1024, 800);
constexpr int kFullWell = 16383;

/// What a sensor measured of a scene with noise, and what became of it.
class Exposure final
{
public:
    /// `light` of a scene at a column and a row.
    explicit Exposure(const std::function<double(int, int)>& light)
    {
        std::mt19937 random(1);
        std::normal_distribution<double> noise(0.0, 20.0);
        for (int y = 0; y < kExposed.height(); ++y) {
            for (int x = 0; x < kExposed.width(); ++x) {
                // Green is twice as bright as red and blue.
                const double filter = (x + y) % 2 == 0 ? 1.0 : 0.5;
                m_values.push_back(static_cast<quint16>(
                    std::clamp(light(x, y) * filter + noise(random), 0.0, double{kFullWell})));
            }
        }
    }

    /// A wall that grows lighter to the right.
    [[nodiscard]] static Exposure ofAWall()
    {
        return Exposure([](int x, int) { return 2000.0 + x; });
    }

    /// From a place in a row on, as in files, `count` values become others.
    Exposure& change(QPoint place, int count, const std::function<int(int value)>& other)
    {
        auto first = m_values.begin() + place.y() * kExposed.width() + place.x();
        std::transform(first, first + count, first, [&](quint16 value) {
            return static_cast<quint16>(other(value));
        });
        return *this;
    }

    [[nodiscard]] std::optional<double> longestBreak(int channels = 1) const
    {
        return SensorBreaks::longest({.first = m_values.data(),
                                      .stride = kExposed.width(),
                                      .channels = channels,
                                      .size = QSize(kExposed.width() / channels, kExposed.height()),
                                      .black = 0,
                                      .white = kFullWell});
    }

private:
    std::vector<quint16> m_values;
};

constexpr int kValuesOfRow = 1024;

void expectBreakAt(const std::optional<double>& found, int row)
{
    ASSERT_TRUE(found.has_value()) << row;
    EXPECT_NEAR(*found * kExposed.height(), row, 4.0);
}

} // namespace

TEST(SensorBreaksTest, aSceneWithoutEdgesHasNoBreak)
{
    EXPECT_FALSE(Exposure::ofAWall().longestBreak().has_value());
    EXPECT_FALSE(Exposure::ofAWall().longestBreak(4).has_value());
}

TEST(SensorBreaksTest, dataThatWereOverwrittenBreakWhereverTheyBegin)
{
    for (const QPoint place : {QPoint(0, 100), QPoint(512, 333), QPoint(900, 600)}) {
        for (const int value : {0, kFullWell}) {
            auto exposure = Exposure::ofAWall();
            exposure.change(place, 12 * kValuesOfRow, [value](int) { return value; });
            const auto found = exposure.longestBreak();
            ASSERT_TRUE(found.has_value()) << place.y() << ' ' << value;
            const double row = *found * kExposed.height();
            EXPECT_GE(row, place.y() - 4) << value;
            EXPECT_LE(row, place.y() + 17) << value;
            EXPECT_TRUE(exposure.longestBreak(4).has_value()) << place.y() << ' ' << value;
        }
    }
}

TEST(SensorBreaksTest, noiseInPlaceOfDataBreaks)
{
    std::mt19937 random(2);
    auto exposure = Exposure::ofAWall();
    exposure.change(
        {100, 400}, 10 * kValuesOfRow, [&](int) { return static_cast<int>(random() % kFullWell); });
    EXPECT_TRUE(exposure.longestBreak().has_value());
}

TEST(SensorBreaksTest, aLevelThatIsLostFromARowOnBreaksThere)
{
    auto exposure = Exposure::ofAWall();
    exposure.change({0, 700}, 100 * kValuesOfRow, [](int value) { return value + 500; });
    expectBreakAt(exposure.longestBreak(), 700);
}

TEST(SensorBreaksTest, aHorizonThatIsNotLevelToThePixelIsNoBreak)
{
    const Exposure exposure([](int x, int y) {
        constexpr double kSlope = 0.01; // half a degree
        return y < 400 + kSlope * x ? 8000.0 : 1500.0;
    });
    EXPECT_FALSE(exposure.longestBreak().has_value());
}

TEST(SensorBreaksTest, aLevelEdgeThatTheLensSoftensIsNoBreak)
{
    const Exposure exposure(
        [](int, int y) { return 5000.0 + 3000.0 * std::tanh((y - 400.0) / 2.5); });
    EXPECT_FALSE(exposure.longestBreak().has_value());
}

TEST(SensorBreaksTest, singleRowsOfOtherCellsAreNoBreak)
{
    auto exposure = Exposure::ofAWall();
    for (int row = 100; row < 700; row += 12) {
        exposure.change({0, row}, kValuesOfRow, [](int value) { return value / 2; });
    }
    EXPECT_FALSE(exposure.longestBreak().has_value());
}

TEST(SensorBreaksTest, maskedCellsAtTheRimAreNoBreak)
{
    auto exposure = Exposure::ofAWall();
    exposure.change({0, 0}, 12 * kValuesOfRow, [](int) { return 64; });
    exposure.change({0, 790}, 10 * kValuesOfRow, [](int) { return 64; });
    EXPECT_FALSE(exposure.longestBreak().has_value());
}

TEST(SensorBreaksTest, whatIsOtherInAPartOfTheRowsIsNoBreak)
{
    auto exposure = Exposure::ofAWall();
    for (int row = 300; row < 400; ++row) {
        exposure.change({200, row}, 400, [](int) { return 0; });
    }
    EXPECT_FALSE(exposure.longestBreak().has_value());
}

TEST(SensorBreaksTest, smallPicturesTellNothing)
{
    const std::vector<quint16> values(std::size_t{128} * 32);
    EXPECT_FALSE(SensorBreaks::longest(
                     {.first = values.data(), .stride = 128, .channels = 1, .size = QSize(128, 32)})
                     .has_value());
}
