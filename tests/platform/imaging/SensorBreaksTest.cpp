#include "SensorBreaks.h"

#include <QRect>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <string_view>
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
        auto first = m_values.begin() + std::ptrdiff_t{place.y()} * kExposed.width() + place.x();
        std::transform(first, first + count, first, [&](quint16 value) {
            return static_cast<quint16>(other(value));
        });
        return *this;
    }

    [[nodiscard]] std::vector<double> breaks(const SensorValues& kind = {.period = 2}) const
    {
        return SensorBreaks::places(
            {.first = m_values.data(),
             .stride = kExposed.width(),
             .channels = kind.channels,
             .period = kind.period,
             .size = QSize(kExposed.width() / kind.channels, kExposed.height()),
             .mayHaveRim = kind.mayHaveRim,
             .black = 0,
             .white = kFullWell});
    }

private:
    std::vector<quint16> m_values;
};

constexpr int kValuesOfRow = 1024;

constexpr SensorValues kComplete{.channels = 4};

void expectBreaksAt(const std::vector<double>& found, const std::vector<int>& rows)
{
    ASSERT_EQ(found.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_NEAR(found[i] * kExposed.height(), rows[i], 1.01);
    }
}

} // namespace

TEST(SensorBreaksTest, aSceneWithoutEdgesHasNoBreak)
{
    EXPECT_TRUE(Exposure::ofAWall().breaks().empty());
    EXPECT_TRUE(Exposure::ofAWall().breaks(kComplete).empty());
}

TEST(SensorBreaksTest, dataThatWereOverwrittenBreakWhereverTheyBegin)
{
    for (const QPoint place : {QPoint(0, 100), QPoint(512, 333), QPoint(900, 600)}) {
        for (const int value : {0, kFullWell}) {
            auto exposure = Exposure::ofAWall();
            exposure.change(place, 12 * kValuesOfRow, [value](int) { return value; });
            SCOPED_TRACE(value);
            expectBreaksAt(exposure.breaks(), {place.y(), place.y() + 12});
            EXPECT_FALSE(exposure.breaks(kComplete).empty()) << place.y();
        }
    }
}

TEST(SensorBreaksTest, noiseInPlaceOfDataBreaks)
{
    std::mt19937 random(2);
    auto exposure = Exposure::ofAWall();
    exposure.change(
        {100, 400}, 10 * kValuesOfRow, [&](int) { return static_cast<int>(random() % kFullWell); });
    EXPECT_FALSE(exposure.breaks().empty());
}

TEST(SensorBreaksTest, aLevelThatIsLostFromARowOnBreaksThere)
{
    auto exposure = Exposure::ofAWall();
    exposure.change({0, 700}, 100 * kValuesOfRow, [](int value) { return value + 500; });
    expectBreaksAt(exposure.breaks(), {700});
}

TEST(SensorBreaksTest, aHorizonThatIsNotLevelToThePixelIsNoBreak)
{
    const Exposure exposure([](int x, int y) {
        constexpr double kSlope = 0.01; // half a degree
        return y < 400 + kSlope * x ? 8000.0 : 1500.0;
    });
    EXPECT_TRUE(exposure.breaks().empty());
}

TEST(SensorBreaksTest, aLevelEdgeThatTheLensSoftensIsNoBreak)
{
    const Exposure exposure(
        [](int, int y) { return 5000.0 + 3000.0 * std::tanh((y - 400.0) / 2.5); });
    EXPECT_TRUE(exposure.breaks().empty());
}

TEST(SensorBreaksTest, singleRowsOfOtherCellsAreNoBreak)
{
    auto exposure = Exposure::ofAWall();
    for (int row = 100; row < 700; row += 12) {
        exposure.change({0, row}, kValuesOfRow, [](int value) { return value / 2; });
    }
    EXPECT_TRUE(exposure.breaks().empty());
}

TEST(SensorBreaksTest, longBreaksHideNoShorterOnes)
{
    auto exposure = Exposure::ofAWall();
    exposure.change({0, 500}, 300 * kValuesOfRow, [](int value) { return value + 500; });
    for (int row = 200; row < 230; ++row) {
        exposure.change({100, row}, 600, [](int) { return 0; });
    }
    expectBreaksAt(exposure.breaks(), {200, 230, 500});
}

TEST(SensorBreaksTest, filtersThatRepeatAfterSixRowsAreComparedWithTheirOwn)
{
    // Green among red and blue as X-Trans sensors have them: rows two apart differ all over.
    static constexpr std::array<std::string_view, 6> kGreens{
        "G.GG.G", ".G..G.", "G.GG.G", "G.GG.G", ".G..G.", "G.GG.G"};
    const Exposure wall([](int x, int y) {
        const auto row = static_cast<std::size_t>(y % 6);
        return kGreens.at(row).at(static_cast<std::size_t>(x % 6)) == 'G' ? 3000.0 : 600.0;
    });
    const SensorValues kind{.period = 6};
    EXPECT_TRUE(wall.breaks(kind).empty());
    auto exposure = wall;
    exposure.change({0, 333}, 100 * kValuesOfRow, [](int value) { return value + 500; });
    EXPECT_TRUE(exposure.breaks({.period = 2}).empty());
    expectBreaksAt(exposure.breaks(kind), {333, 433});
}

TEST(SensorBreaksTest, maskedCellsAtTheRimAreNoBreak)
{
    auto exposure = Exposure::ofAWall();
    exposure.change({0, 0}, 12 * kValuesOfRow, [](int) { return 64; });
    exposure.change({0, 790}, 10 * kValuesOfRow, [](int) { return 64; });
    EXPECT_TRUE(exposure.breaks().empty());
}

TEST(SensorBreaksTest, whereThereIsNoRimTheOutermostRowsBreakToo)
{
    for (const int row : {0, 776}) {
        auto exposure = Exposure::ofAWall();
        exposure.change({0, row}, 24 * kValuesOfRow, [](int) { return 0; });
        expectBreaksAt(exposure.breaks({.period = 2, .mayHaveRim = false}), {row == 0 ? 24 : row});
    }
}

TEST(SensorBreaksTest, whatIsOtherInAPartOfTheRowsIsNoBreak)
{
    auto exposure = Exposure::ofAWall();
    for (int row = 300; row < 400; ++row) {
        exposure.change({200, row}, 400, [](int) { return 0; });
    }
    EXPECT_TRUE(exposure.breaks().empty());
}

TEST(SensorBreaksTest, smallPicturesTellNothing)
{
    const std::vector<quint16> values(std::size_t{128} * 32);
    EXPECT_TRUE(SensorBreaks::places(
                    {.first = values.data(), .stride = 128, .channels = 1, .size = QSize(128, 32)})
                    .empty());
}
