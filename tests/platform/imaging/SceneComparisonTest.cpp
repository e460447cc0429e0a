#include "SceneComparison.h"

#include "BitmapImage.h"
#include "Correlation.h"
#include "ImageBuilder.h"
#include "SceneSamples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

namespace
{

SmallPicture scene(QSize size)
{
    return SmallPicture::of(ImageBuilder::scene(size));
}

constexpr std::array kModes{Qt::SmoothTransformation, Qt::FastTransformation};

void fill(Bitmap& bitmap, const QRect& area, quint16 value)
{
    for (int y = area.top(); y <= area.bottom(); ++y) {
        std::ranges::fill(bitmap.row(y).subspan(3 * static_cast<std::size_t>(area.left()),
                                                3 * static_cast<std::size_t>(area.width())),
                          value);
    }
}

void fillWithNoise(Bitmap& bitmap, const QRect& area)
{
    std::mt19937 random(5);
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (quint16& value : bitmap.row(y).subspan(3 * static_cast<std::size_t>(area.left()),
                                                    3 * static_cast<std::size_t>(area.width()))) {
            value = static_cast<quint16>(random() & 0xFFFFU);
        }
    }
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

TEST(SceneComparisonTest, photosPassByTheirThumbnailsHoweverMade)
{
    for (const QSize size : {QSize(1200, 800), QSize(801, 601), QSize(333, 500), QSize(96, 72)}) {
        const Bitmap picture = SceneSamples::leaves(size);
        for (const int side : {64, 96, 128, 160, 256, 320}) {
            for (const auto mode : kModes) {
                const QImage thumbnail = SceneSamples::thumbnailOf(picture, side, mode);
                const auto complaint = SceneComparison::thumbnailComplaint(picture, thumbnail);
                EXPECT_FALSE(complaint.has_value()) << size.width() << ' ' << side << ' ' << mode;
            }
        }
    }
}

TEST(SceneComparisonTest, garbageInAPhotoIsFoundByItsThumbnail)
{
    const QSize size(1200, 800);
    const Bitmap picture = SceneSamples::leaves(size);
    Bitmap band = picture;
    fillWithNoise(band, {0, 500, 1200, 100});
    Bitmap block = picture;
    fill(block, {400, 150, 200, 150}, 0);
    Bitmap quarter = picture;
    fill(quarter, {600, 400, 600, 400}, 32768);
    for (const int side : {96, 128, 160, 256, 320}) {
        for (const auto mode : kModes) {
            const QImage thumbnail = SceneSamples::thumbnailOf(picture, side, mode);
            for (const Bitmap& damaged : {band, block, quarter}) {
                EXPECT_TRUE(SceneComparison::thumbnailComplaint(damaged, thumbnail).has_value())
                    << side << ' ' << mode;
            }
        }
    }
}

TEST(SceneComparisonTest, aThumbnailTooSmallToShowPlacesProvesNothingOfThem)
{
    const Bitmap picture = ImageBuilder::scene({640, 480});
    Bitmap smeared = picture;
    fill(smeared, {100, 200, 60, 60}, 9000);
    const QImage thumbnail = BitmapImage::toImage(ImageBuilder::scene({60, 45}));
    EXPECT_FALSE(SceneComparison::thumbnailComplaint(smeared, thumbnail).has_value());
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
