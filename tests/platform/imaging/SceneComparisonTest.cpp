#include "SceneComparison.h"

#include "BitmapImage.h"
#include "Correlation.h"
#include "ImageBuilder.h"

#include <gtest/gtest.h>

#include <array>

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

TEST(SceneComparisonTest, noiseIsLikeNothing)
{
    const auto noise = SmallPicture::of(ImageBuilder::noise({640, 480}));
    EXPECT_LT(SceneComparison::likeness(scene({640, 480}), noise), 0.2);
    EXPECT_TRUE(SceneComparison::isNoise(ImageBuilder::noise({640, 480})));
    EXPECT_FALSE(SceneComparison::isNoise(ImageBuilder::scene({640, 480})));
    EXPECT_FALSE(SceneComparison::isNoise(ImageBuilder::flat({640, 480}, 100)));
}

TEST(SceneComparisonTest, darknessAndStarsAreNoGarbage)
{
    for (const int stars : {0, 200, 2000}) {
        EXPECT_FALSE(SceneComparison::isNoise(ImageBuilder::night({640, 480}, stars))) << stars;
    }
}

TEST(SceneComparisonTest, aSceneIsNotDoubtedForThePreviewOfAnother)
{
    const Bitmap picture = ImageBuilder::scene({320, 240});
    const QImage other = BitmapImage::toImage(picture).mirrored(false, true);
    EXPECT_FALSE(SceneComparison::complaint(picture, other).has_value());
    EXPECT_FALSE(SceneComparison::complaint(picture, std::nullopt).has_value());
}

TEST(SceneComparisonTest, aPlaceThatDiffersFromTheThumbnailIsDamage)
{
    const Bitmap picture = ImageBuilder::scene({640, 480});
    const QImage thumbnail = BitmapImage::toImage(ImageBuilder::scene({160, 120}));
    EXPECT_FALSE(SceneComparison::thumbnailComplaint(picture, thumbnail).has_value());
    Bitmap smeared = picture;
    for (int y = 200; y < 260; ++y) {
        std::ranges::fill(smeared.row(y).subspan(300, 180), quint16{9000});
    }
    EXPECT_TRUE(SceneComparison::thumbnailComplaint(smeared, thumbnail).has_value());
    // Nothing to go by: a thumbnail of another scene, or of nothing.
    const QImage other = thumbnail.mirrored(false, true);
    EXPECT_FALSE(SceneComparison::thumbnailComplaint(smeared, other).has_value());
    EXPECT_FALSE(SceneComparison::thumbnailComplaint(smeared, QImage()).has_value());
}

TEST(SceneComparisonTest, aThumbnailOfAnotherToneProvesNothing)
{
    const Bitmap linear = ImageBuilder::scene({640, 480}, Transfer::Linear);
    Bitmap darker = linear;
    for (int y = 0; y < darker.pixelsHigh(); ++y) {
        for (quint16& value : darker.row(y)) {
            value = static_cast<quint16>(value / 2);
        }
    }
    const QImage thumbnail = BitmapImage::toImage(ImageBuilder::scene({160, 120}));
    EXPECT_FALSE(SceneComparison::thumbnailComplaint(darker, thumbnail).has_value());
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
