#include "PictureNoise.h"

#include "ImageBuilder.h"
#include "SceneSamples.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

bool isNoise(const Bitmap& bitmap)
{
    return PictureNoise::isNoise(SmallPicture::of(bitmap), bitmap.size(), bitmap);
}

/// The rows [from, end) of the other picture in the place of the first one's.
Bitmap withRowsOf(Bitmap picture, const Bitmap& other, int from, int end)
{
    for (int y = from; y < end; ++y) {
        std::ranges::copy(other.row(y), picture.row(y).begin());
    }
    return picture;
}

} // namespace

TEST(PictureNoiseTest, valuesByChanceAreNoise)
{
    EXPECT_TRUE(isNoise(ImageBuilder::noise({640, 480})));
    EXPECT_FALSE(isNoise(ImageBuilder::scene({640, 480})));
    EXPECT_FALSE(isNoise(ImageBuilder::flat({640, 480}, 100)));
}

TEST(PictureNoiseTest, darknessAndStarsAreNoGarbage)
{
    for (const int stars : {0, 200, 2000}) {
        EXPECT_FALSE(isNoise(ImageBuilder::night({640, 480}, stars))) << stars;
    }
}

TEST(PictureNoiseTest, noiseInATenthOfAPictureIsFound)
{
    const Bitmap noise = ImageBuilder::noise({640, 480});
    for (const Bitmap& picture :
         {ImageBuilder::scene({640, 480}), SceneSamples::leaves({640, 480})}) {
        EXPECT_FALSE(PictureNoise::isNoiseInPlaces(picture));
        EXPECT_TRUE(PictureNoise::isNoiseInPlaces(withRowsOf(picture, noise, 0, 48)));
        EXPECT_TRUE(PictureNoise::isNoiseInPlaces(withRowsOf(picture, noise, 430, 480)));
    }
}

TEST(PictureNoiseTest, aDarkFrameOrTheNightHaveNoPlacesOfNoise)
{
    for (const int stars : {0, 200, 2000}) {
        EXPECT_FALSE(PictureNoise::isNoiseInPlaces(ImageBuilder::night({640, 480}, stars)))
            << stars;
    }
}

TEST(PictureNoiseTest, theGrainOfAHighSensitivityIsNoNoise)
{
    Bitmap picture = ImageBuilder::scene({640, 480});
    const Bitmap noise = ImageBuilder::noise({640, 480});
    for (int y = 0; y < picture.pixelsHigh(); ++y) {
        const auto row = picture.row(y);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const int grain = (noise.row(y)[i] - 32768) / 3;
            row[i] = static_cast<quint16>(std::clamp(row[i] + grain, 0, 65535));
        }
    }
    EXPECT_FALSE(isNoise(picture));
    EXPECT_FALSE(PictureNoise::isNoiseInPlaces(picture));
}
