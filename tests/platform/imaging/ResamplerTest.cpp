#include "Resampler.h"

#include "ImageBuilder.h"
#include "QtPrinters.h"
#include "SrgbTransfer.h"

#include <gtest/gtest.h>

namespace
{

double meanOf(const Bitmap& bitmap)
{
    double sum = 0.0;
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (const quint16 value : bitmap.row(y)) {
            sum += value;
        }
    }
    return sum / (3.0 * bitmap.pixelsWide() * bitmap.pixelsHigh());
}

} // namespace

TEST(ResamplerTest, resultHasTheAskedSizeAndLinearValues)
{
    const Bitmap scene = ImageBuilder::scene({301, 199});
    for (const QSize size : {QSize(150, 99), QSize(1, 1), QSize(37, 400), QSize(602, 398)}) {
        const auto scaled = Resampler::scale(scene, size);
        ASSERT_TRUE(scaled.ok());
        EXPECT_EQ(scaled.value().size(), size);
        EXPECT_EQ(scaled.value().transfer(), Transfer::Linear);
    }
}

TEST(ResamplerTest, sameSizeChangesNoPixel)
{
    const Bitmap scene = ImageBuilder::scene({64, 48}, Transfer::Linear);
    const auto scaled = Resampler::scale(scene, {64, 48});
    ASSERT_TRUE(scaled.ok());
    EXPECT_EQ(ImageBuilder::difference(scaled.value(), scene), 0.0);
}

TEST(ResamplerTest, sceneStaysTheSceneWhenScaled)
{
    const auto scaled = Resampler::scale(ImageBuilder::scene({800, 600}), {200, 150});
    ASSERT_TRUE(scaled.ok());
    EXPECT_LT(ImageBuilder::difference(scaled.value(), ImageBuilder::scene({200, 150})), 0.01);
}

TEST(ResamplerTest, averagingHappensInLight)
{
    // Fine black and white stripes give half the light, which sRGB encodes as 188 of 255.
    Bitmap stripes(256, 256, Transfer::Srgb);
    for (int y = 0; y < 256; ++y) {
        std::ranges::fill(stripes.row(y), y % 2 == 0 ? quint16{0} : quint16{65535});
    }
    const auto scaled = Resampler::scale(stripes, {64, 64});
    ASSERT_TRUE(scaled.ok());
    const Bitmap result = SrgbTransfer::converted(scaled.value(), Transfer::Srgb);
    EXPECT_NEAR(meanOf(result) / 257.0, 188.0, 2.0);
}

TEST(ResamplerTest, flatPictureKeepsItsValueToTheLastBits)
{
    const auto scaled =
        Resampler::scale(ImageBuilder::flat({333, 222}, 12345, Transfer::Linear), {100, 67});
    ASSERT_TRUE(scaled.ok());
    for (int y = 0; y < 67; ++y) {
        for (const quint16 value : scaled.value().row(y)) {
            ASSERT_NEAR(value, 12345, 2);
        }
    }
}

TEST(ResamplerTest, channelsStayInPlace)
{
    Bitmap red(90, 60, Transfer::Linear);
    for (int y = 0; y < 60; ++y) {
        const auto row = red.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            row[i] = 60000;
            row[i + 1] = 30000;
        }
    }
    const auto scaled = Resampler::scale(red, {45, 30});
    ASSERT_TRUE(scaled.ok());
    EXPECT_NEAR(scaled.value().row(15)[30], 60000, 4);
    EXPECT_NEAR(scaled.value().row(15)[31], 30000, 4);
    EXPECT_NEAR(scaled.value().row(15)[32], 0, 4);
}

TEST(ResamplerTest, emptySizesAreErrors)
{
    EXPECT_FALSE(Resampler::scale(ImageBuilder::scene({10, 10}), {0, 5}).ok());
    EXPECT_FALSE(Resampler::scale(Bitmap(), {5, 5}).ok());
}
