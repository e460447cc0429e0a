#include "CieLab.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

CieLab labOf(float red, float green, float blue)
{
    return CieLab::of(std::array<float, 3>{red, green, blue});
}

} // namespace

TEST(CieLabTest, greyHasNoColourAndTheLightnessOfItsLight)
{
    // 0.184187 of the light is half as light as white.
    for (const auto& [light, lightness] :
         {std::pair(0.0F, 0.0F), std::pair(0.184187F, 50.0F), std::pair(1.0F, 100.0F)}) {
        const CieLab lab = labOf(light, light, light);
        EXPECT_NEAR(lab.lightness, lightness, 0.01F);
        EXPECT_NEAR(lab.redGreen, 0.0F, 0.01F);
        EXPECT_NEAR(lab.yellowBlue, 0.0F, 0.01F);
    }
}

TEST(CieLabTest, primariesAreWhereTheStandardsPutThem)
{
    const CieLab red = labOf(1.0F, 0.0F, 0.0F);
    EXPECT_NEAR(red.lightness, 53.24F, 0.02F);
    EXPECT_NEAR(red.redGreen, 80.09F, 0.05F);
    EXPECT_NEAR(red.yellowBlue, 67.20F, 0.05F);
    const CieLab blue = labOf(0.0F, 0.0F, 1.0F);
    EXPECT_NEAR(blue.lightness, 32.30F, 0.02F);
    EXPECT_NEAR(blue.redGreen, 79.19F, 0.05F);
    EXPECT_NEAR(blue.yellowBlue, -107.86F, 0.05F);
}

TEST(CieLabTest, lightBeyondItsBoundsIsClipped)
{
    const CieLab lab = labOf(3.0F, 3.0F, 3.0F);
    EXPECT_NEAR(lab.lightness, 100.0F, 0.01F);
    EXPECT_NEAR(labOf(-1.0F, -1.0F, -1.0F).lightness, 0.0F, 0.01F);
}
