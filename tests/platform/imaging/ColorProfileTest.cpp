#include "ColorProfile.h"

#include "ImageBuilder.h"
#include "ProfileSamples.h"

#include <QColorSpace>

#include <gtest/gtest.h>

TEST(ColorProfileTest, sRgbProfileIsOneAndAlwaysTheSame)
{
    const QColorSpace space = QColorSpace::fromIccProfile(ColorProfile::sRgb());
    ASSERT_TRUE(space.isValid());
    EXPECT_EQ(space.primaries(), QColorSpace::Primaries::SRgb);
    EXPECT_EQ(ColorProfile::sRgb(), ColorProfile::sRgb());
    EXPECT_LT(ColorProfile::sRgb().size(), 65000);
}

TEST(ColorProfileTest, picturesOfSRgbStayAsTheyAre)
{
    const Bitmap scene = ImageBuilder::scene({60, 40});
    Bitmap converted = scene;
    ColorProfile::convertToSrgb(converted, ColorProfile::sRgb());
    EXPECT_LT(ImageBuilder::difference(converted, scene), 0.001);
}

TEST(ColorProfileTest, wideColoursBecomeStrongerValues)
{
    Bitmap picture = ImageBuilder::flat({4, 4}, 20000);
    picture.row(0)[1] = 50000; // one green pixel
    ColorProfile::convertToSrgb(picture, QColorSpace(QColorSpace::AdobeRgb).iccProfile());
    EXPECT_LT(picture.row(0)[0], 20000);
    EXPECT_NEAR(picture.row(1)[0], picture.row(1)[1], 300);
}

TEST(ColorProfileTest, profilesForGreyHoldForPicturesWithoutColours)
{
    const QByteArray linear = ProfileSamples::linearGrey();
    Bitmap grey = ImageBuilder::flat({4, 4}, 14000);
    ColorProfile::convertToSrgb(grey, linear);
    // IEC 61966-2-1 encodes a light of 0.2136 as 0.4995.
    EXPECT_NEAR(grey.row(3)[11], 32736, 60);
    EXPECT_NEAR(grey.row(3)[9], grey.row(3)[11], 1);
    const Bitmap scene = ImageBuilder::scene({60, 40});
    Bitmap coloured = scene;
    ColorProfile::convertToSrgb(coloured, linear);
    EXPECT_EQ(ImageBuilder::difference(coloured, scene), 0.0);
}

TEST(ColorProfileTest, madeProfilesAreThoseOfTheirNumbers)
{
    const Bitmap scene = ImageBuilder::scene({60, 40});
    Bitmap byNumbers = scene;
    ColorProfile::convertToSrgb(byNumbers, ColorProfile::adobeRgb());
    Bitmap byName = scene;
    ColorProfile::convertToSrgb(byName, QColorSpace(QColorSpace::AdobeRgb).iccProfile());
    EXPECT_LT(ImageBuilder::difference(byNumbers, byName), 0.002);
    EXPECT_TRUE(ColorProfile::made({}, {}).isEmpty());
}

TEST(ColorProfileTest, rubbishAndOtherKindsLeaveThePictureAlone)
{
    const Bitmap scene = ImageBuilder::scene({60, 40});
    Bitmap picture = scene;
    ColorProfile::convertToSrgb(picture, "no profile");
    EXPECT_EQ(ImageBuilder::difference(picture, scene), 0.0);
    EXPECT_FALSE(ColorProfile::ToSrgb::create(ColorProfile::sRgb(), ColorProfile::Layout::Cmyk16));
    EXPECT_FALSE(ColorProfile::ToSrgb::create({}, ColorProfile::Layout::Rgb16));
}
