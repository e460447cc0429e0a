#include "SceneComparison.h"

#include "BitmapImage.h"
#include "Correlation.h"
#include "ImageBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace
{

SmallPicture scene(QSize size)
{
    return SmallPicture::of(ImageBuilder::scene(size));
}

} // namespace

TEST(SceneComparisonTest, onlyScenesAreStructured)
{
    EXPECT_TRUE(SceneComparison::isStructured(scene({640, 480})));
    EXPECT_FALSE(
        SceneComparison::isStructured(SmallPicture::of(ImageBuilder::flat({640, 480}, 9))));
    EXPECT_FALSE(SceneComparison::isStructured(SmallPicture::of(ImageBuilder::noise({640, 480}))));
    EXPECT_FALSE(SceneComparison::isStructured(scene({16, 12})));
    EXPECT_FALSE(SceneComparison::isStructured(SmallPicture::of(QImage())));
}

TEST(SceneComparisonTest, sameSceneIsAlikeInAnyToneAndTurn)
{
    const Bitmap linear = ImageBuilder::scene({640, 480}, Transfer::Linear);
    const QImage image = BitmapImage::toImage(ImageBuilder::scene({160, 120}));
    EXPECT_GT(SceneComparison::likeness(SmallPicture::of(linear), SmallPicture::of(image)), 0.98);
    const QImage turned = image.transformed(QTransform().rotate(270));
    EXPECT_GT(SceneComparison::likeness(SmallPicture::of(linear), SmallPicture::of(turned)), 0.98);
}

TEST(SceneComparisonTest, noiseIsLikeNothing)
{
    const auto noise = SmallPicture::of(ImageBuilder::noise({640, 480}));
    EXPECT_LT(SceneComparison::likeness(scene({640, 480}), noise), 0.2);
}

TEST(SceneComparisonTest, blackBarsOfAPreviewAreSetAside)
{
    const QImage image = BitmapImage::toImage(ImageBuilder::scene({160, 106}));
    QImage barred(160, 120, QImage::Format_RGB888);
    barred.fill(Qt::black);
    for (int y = 0; y < image.height(); ++y) {
        std::copy_n(image.constScanLine(y), 480, barred.scanLine(y + 7));
    }
    EXPECT_GT(SceneComparison::likeness(scene({600, 400}), SmallPicture::of(barred)), 0.95);
}

TEST(SceneComparisonTest, equalValuesShareTheirMeanRank)
{
    const std::array<float, 4> values{0.5F, -0.1F, 0.5F, 0.9F};
    EXPECT_EQ(Correlation::ranksOf(values), (std::vector<float>{1.5F, 0.0F, 1.5F, 3.0F}));
    EXPECT_TRUE(Correlation::ranksOf({}).empty());
}

TEST(SceneComparisonTest, ranksCorrelateWhateverTheTone)
{
    const std::array<float, 5> values{0.1F, 0.2F, 0.2F, 0.6F, 0.9F};
    const std::array<float, 5> curved{0.01F, 0.04F, 0.04F, 0.36F, 0.81F};
    const std::array<float, 5> falling{0.9F, 0.8F, 0.8F, 0.2F, 0.1F};
    const std::array<float, 5> flat{};
    EXPECT_NEAR(Correlation::ofRanks(values, curved), 1.0, 1e-9);
    EXPECT_NEAR(Correlation::ofRanks(values, falling), -1.0, 1e-9);
    EXPECT_EQ(Correlation::ofRanks(values, flat), 0.0);
}

TEST(SceneComparisonTest, aColourThatFollowsLightnessFarIsNoTone)
{
    // A sunset: from a dark blue to a light orange.
    QImage sunset(256, 64, QImage::Format_RGB32);
    QImage sepia = sunset;
    for (int x = 0; x < sunset.width(); ++x) {
        for (int y = 0; y < sunset.height(); ++y) {
            sunset.setPixelColor(x, y, {x, x * 6 / 8, 140 - x * 3 / 8});
            sepia.setPixelColor(x, y, {x, x * 7 / 8, x * 6 / 8});
        }
    }
    EXPECT_FALSE(SceneComparison::isToned(SceneComparison::Views::of(sunset)));
    EXPECT_TRUE(SceneComparison::isToned(SceneComparison::Views::of(sepia)));
    EXPECT_TRUE(SceneComparison::isMonochrome(SceneComparison::Views::of(sepia)));
}
