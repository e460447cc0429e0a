#include "Camera.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

struct Spread {
    double mean;
    double deviation;
};

Spread spreadOf(const Exposure& exposure, float signal)
{
    constexpr int kCount = 20000;
    double sum = 0.0;
    double squares = 0.0;
    for (quint32 position = 0; position < kCount; ++position) {
        const double value = exposure.valueOf(signal, position);
        sum += value;
        squares += value * value;
    }
    const double mean = sum / kCount;
    return {mean, std::sqrt(squares / kCount - mean * mean)};
}

constexpr double kRange = Sensor::kWhiteLevel - Sensor::kBlackLevel;

} // namespace

TEST(CameraTest, whiteIsSeenAsTheStatedNeutral)
{
    const Colour seen = Sensor::filtered({1.0F, 1.0F, 1.0F});
    EXPECT_NEAR(seen.red, Sensor::kNeutral[0] / 100.0, 0.001);
    EXPECT_NEAR(seen.green, Sensor::kNeutral[1] / 100.0, 0.001);
    EXPECT_NEAR(seen.blue, Sensor::kNeutral[2] / 100.0, 0.001);
}

TEST(CameraTest, eachFilterLetsItsOwnColourThroughBest)
{
    const Colour red = Sensor::filtered({1.0F, 0.0F, 0.0F});
    const Colour green = Sensor::filtered({0.0F, 1.0F, 0.0F});
    const Colour blue = Sensor::filtered({0.0F, 0.0F, 1.0F});
    EXPECT_GT(red.red, green.red);
    EXPECT_GT(green.green, std::max(red.green, blue.green));
    EXPECT_GT(blue.blue, std::max(red.blue, green.blue));
}

TEST(CameraTest, darknessLiesAtTheBlackLevelWithReadNoiseAround)
{
    const Spread dark = spreadOf(Exposure(100, 1), 0.0F);
    EXPECT_NEAR(dark.mean, Sensor::kBlackLevel, 0.2);
    EXPECT_NEAR(dark.deviation, 4.0 / 40000.0 * kRange, 0.3);
}

TEST(CameraTest, shotNoiseGrowsWithTheRootOfTheLight)
{
    for (const float signal : {0.04F, 0.16F, 0.64F}) {
        const Spread lit = spreadOf(Exposure(100, 1), signal);
        const double electrons = double{signal} * 40000.0;
        EXPECT_NEAR(lit.mean, Sensor::kBlackLevel + double{signal} * kRange, 2.0) << signal;
        EXPECT_NEAR(lit.deviation, std::sqrt(electrons + 16.0) / 40000.0 * kRange, 2.5) << signal;
    }
}

TEST(CameraTest, aHigherIsoIsNoisier)
{
    const double low = spreadOf(Exposure(100, 1), 0.2F).deviation;
    const double high = spreadOf(Exposure(1600, 1), 0.2F).deviation;
    EXPECT_NEAR(high / low, 4.0, 0.3);
}

TEST(CameraTest, valuesStayWithinFourteenBits)
{
    const Exposure exposure(1600, 1);
    for (quint32 position = 0; position < 5000; ++position) {
        EXPECT_LE(exposure.valueOf(0.99F, position), Sensor::kWhiteLevel);
        EXPECT_EQ(exposure.valueOf(7.0F, position), Sensor::kWhiteLevel);
    }
}

TEST(CameraTest, lessThanNoLightIsDarkness)
{
    EXPECT_EQ(Exposure(100, 1).valueOf(-0.2F, 17), Exposure(100, 1).valueOf(0.0F, 17));
}

TEST(CameraTest, theNoiseDependsOnSeedAndPositionAlone)
{
    const Exposure first(100, 5);
    const Exposure second(100, 5);
    const Exposure other(100, 6);
    int differing = 0;
    for (quint32 position = 0; position < 1000; ++position) {
        EXPECT_EQ(first.valueOf(0.5F, position), second.valueOf(0.5F, position));
        differing += first.valueOf(0.5F, position) != other.valueOf(0.5F, position) ? 1 : 0;
    }
    EXPECT_GT(differing, 900);
}
