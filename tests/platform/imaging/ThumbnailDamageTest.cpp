#include "BitmapImage.h"
#include "DamageSamples.h"
#include "ImageBuilder.h"
#include "PictureDamage.h"
#include "SceneSamples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

using namespace DamageSamples;

// What thumbnails tell of the pictures that they were made of.

namespace
{

constexpr std::array kModes{Qt::SmoothTransformation, Qt::FastTransformation};

std::optional<QString> thumbnailComplaint(const Bitmap& picture, const QImage& thumbnail)
{
    return PictureDamage::thumbnailComplaint(SmallPicture::of(picture),
                                             SmallPicture::of(thumbnail));
}

/// Half as light again in a square that covers places of the thumbnail.
Bitmap dodged(Bitmap picture)
{
    for (int y = 120; y < 280; ++y) {
        for (quint16& value : picture.row(y).subspan(std::size_t{3} * 480, std::size_t{3} * 160)) {
            value = static_cast<quint16>(value / 2 + 32767);
        }
    }
    return picture;
}

} // namespace

TEST(ThumbnailDamageTest, aPlaceThatDiffersFromTheThumbnailIsDamage)
{
    const Bitmap picture = ImageBuilder::scene({640, 480});
    const QImage thumbnail = BitmapImage::toImage(ImageBuilder::scene({160, 120}));
    EXPECT_FALSE(thumbnailComplaint(picture, thumbnail).has_value());
    Bitmap smeared = picture;
    for (int y = 200; y < 260; ++y) {
        std::ranges::fill(smeared.row(y).subspan(300, 180), quint16{9000});
    }
    EXPECT_TRUE(thumbnailComplaint(smeared, thumbnail).has_value());
    // Nothing to go by: a thumbnail of another scene, or of nothing.
    const QImage other = thumbnail.mirrored(false, true);
    EXPECT_FALSE(thumbnailComplaint(smeared, other).has_value());
    EXPECT_FALSE(thumbnailComplaint(smeared, QImage()).has_value());
}

TEST(ThumbnailDamageTest, photosPassByTheirThumbnailsHoweverMade)
{
    for (const QSize size : {QSize(1200, 800), QSize(801, 601), QSize(333, 500), QSize(96, 72)}) {
        const Bitmap picture = SceneSamples::leaves(size);
        for (const int side : {64, 96, 128, 160, 256, 320}) {
            for (const auto mode : kModes) {
                const QImage thumbnail = SceneSamples::thumbnailOf(picture, side, mode);
                EXPECT_FALSE(thumbnailComplaint(picture, thumbnail).has_value())
                    << size.width() << ' ' << side << ' ' << mode;
            }
        }
    }
}

TEST(ThumbnailDamageTest, garbageInAPhotoIsFoundByItsThumbnail)
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
                EXPECT_TRUE(thumbnailComplaint(damaged, thumbnail).has_value())
                    << side << ' ' << mode;
            }
        }
    }
}

TEST(ThumbnailDamageTest, aThumbnailTooSmallToShowPlacesProvesNothingOfThem)
{
    const Bitmap picture = ImageBuilder::scene({640, 480});
    Bitmap smeared = picture;
    fill(smeared, {100, 200, 60, 60}, 9000);
    const QImage thumbnail = BitmapImage::toImage(ImageBuilder::scene({60, 45}));
    EXPECT_FALSE(thumbnailComplaint(smeared, thumbnail).has_value());
}

TEST(ThumbnailDamageTest, aThumbnailOfAnotherToneProvesNothing)
{
    const Bitmap linear = ImageBuilder::scene({640, 480}, Transfer::Linear);
    Bitmap darker = linear;
    for (int y = 0; y < darker.pixelsHigh(); ++y) {
        for (quint16& value : darker.row(y)) {
            value = static_cast<quint16>(value / 2);
        }
    }
    const QImage thumbnail = BitmapImage::toImage(ImageBuilder::scene({160, 120}));
    EXPECT_FALSE(thumbnailComplaint(darker, thumbnail).has_value());
}

TEST(ThumbnailDamageTest, changesOfToneThatLeftTheExifThumbnailAreNoDamage)
{
    const Bitmap picture = redLeavesBelow();
    const QImage thumbnail = SceneSamples::thumbnailOf(picture, 160, Qt::SmoothTransformation);
    for (const Bitmap& changed :
         {picture, dodged(picture), throughRedFilter(picture), throughRedFilter(picture, 0.4)}) {
        EXPECT_FALSE(PictureDamage::exifThumbnailComplaint(changed, thumbnail).has_value());
    }
}

TEST(ThumbnailDamageTest, aFinishedPictureMadeBlackAndWhiteSinceItsPreviewIsNoDamage)
{
    const Bitmap picture = redLeavesBelow();
    const QImage preview = SceneSamples::thumbnailOf(picture, 320, Qt::SmoothTransformation);
    EXPECT_FALSE(
        PictureDamage::complaintOfFinished(throughRedFilter(picture), preview).has_value());
    EXPECT_TRUE(PictureDamage::complaintOfFinished(shifted(picture, 480), preview).has_value());
}

TEST(ThumbnailDamageTest, ofAFinishedPictureInBlackAndWhiteBesideColoursOnlyEmptyPartsAreNoticed)
{
    const Bitmap picture = redLeavesBelow();
    const QImage preview = SceneSamples::thumbnailOf(picture, 320, Qt::SmoothTransformation);
    const Bitmap moved = shifted(throughRedFilter(picture), 480);
    EXPECT_FALSE(PictureDamage::complaintOfFinished(moved, preview).has_value());
    EXPECT_FALSE(PictureDamage::exifThumbnailComplaint(moved, preview).has_value());
    Bitmap emptied = throughRedFilter(picture);
    fill(emptied, {150, 100, 600, 300}, 20000);
    EXPECT_TRUE(PictureDamage::complaintOfFinished(emptied, preview).has_value());
    EXPECT_TRUE(PictureDamage::exifThumbnailComplaint(emptied, preview).has_value());
}

TEST(ThumbnailDamageTest, garbageIsFoundByTheExifThumbnail)
{
    for (const Bitmap& picture :
         {SceneSamples::leaves(kLandscape), throughRedFilter(redLeavesBelow())}) {
        const QImage thumbnail = SceneSamples::thumbnailOf(picture, 160, Qt::SmoothTransformation);
        const auto found = PictureDamage::exifThumbnailComplaint(shifted(picture, 480), thumbnail);
        ASSERT_TRUE(found.has_value());
        EXPECT_TRUE(found->contains(QStringLiteral("left the thumbnail")));
    }
}
