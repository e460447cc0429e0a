#include "Noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

TEST(NoiseTest, chancesFillTheRangeEvenly)
{
    double sum = 0.0;
    int low = 0;
    constexpr int kCount = 20000;
    for (int i = 0; i < kCount; ++i) {
        const float value = chance(5, i % 200, i / 200);
        ASSERT_GE(value, 0.0F);
        ASSERT_LT(value, 1.0F);
        sum += value;
        low += value < 0.1F ? 1 : 0;
    }
    EXPECT_NEAR(sum / kCount, 0.5, 0.01);
    EXPECT_NEAR(low, 0.1 * kCount, 0.01 * kCount);
}

TEST(NoiseTest, neighboursAndSeedsScatterDifferently)
{
    std::set<quint32> seen;
    for (int x = -20; x < 20; ++x) {
        for (int y = -20; y < 20; ++y) {
            seen.insert(scatter(1, x, y));
            seen.insert(scatter(2, x, y));
        }
    }
    EXPECT_EQ(seen.size(), 2U * 40 * 40);
}

TEST(NoiseTest, theSameSeedGivesTheSameNoise)
{
    const Noise first(7);
    const Noise second(7);
    const Noise other(8);
    EXPECT_EQ(first.fractal(3.3F, 9.1F, 4), second.fractal(3.3F, 9.1F, 4));
    EXPECT_NE(first.fractal(3.3F, 9.1F, 4), other.fractal(3.3F, 9.1F, 4));
}

TEST(NoiseTest, noiseIsBoundedBalancedAndSmooth)
{
    const Noise noise(3);
    double sum = 0.0;
    int count = 0;
    for (int row = -40; row < 150; ++row) {
        for (int column = -45; column < 180; ++column) {
            const float x = 0.11F * static_cast<float>(column);
            const float y = 0.13F * static_cast<float>(row);
            const float value = noise.at(x, y);
            ASSERT_LE(std::abs(value), 1.05F) << x << ", " << y;
            ASSERT_NEAR(value, noise.at(x + 0.001F, y), 0.02F) << x << ", " << y;
            sum += value;
            ++count;
        }
    }
    EXPECT_NEAR(sum / count, 0.0, 0.02);
}

TEST(NoiseTest, noiseIsNothingOnTheGridAndRepeatsAfterItsPeriod)
{
    const Noise noise(4);
    EXPECT_NEAR(noise.at(5.0F, 11.0F), 0.0F, 1e-5F);
    EXPECT_NEAR(noise.at(5.25F, 11.5F), noise.at(5.25F + 128.0F, 11.5F - 128.0F), 1e-4F);
}
