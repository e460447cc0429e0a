#include "RawPhoto.h"

#include "BayerSamples.h"
#include "BitmapImage.h"
#include "ImageBuilder.h"
#include "QtPrinters.h"
#include "RenditionSamples.h"
#include "SceneSamples.h"
#include "SrgbTransfer.h"

#include <gtest/gtest.h>

#include <libraw/libraw.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace
{

Bitmap leaves(QSize size)
{
    return SrgbTransfer::converted(SceneSamples::leaves(size), Transfer::Linear);
}

Bitmap linearOf(const QByteArray& dng)
{
    const auto photo = RawPhoto::open(dng);
    EXPECT_TRUE(photo.ok());
    return photo.ok() ? photo.value().linear() : Bitmap();
}

/// Light as LibRaw's pixel grouping finds it.
Bitmap byPixelGrouping(const QByteArray& dng)
{
    const auto libRaw = std::make_unique<LibRaw>();
    QByteArray bytes = dng;
    auto& parameters = libRaw->imgdata.params;
    EXPECT_EQ(libRaw->open_buffer(bytes.data(), static_cast<std::size_t>(bytes.size())), 0);
    parameters.use_camera_wb = 1;
    parameters.no_auto_bright = 1;
    parameters.output_bps = 16;
    parameters.gamm[0] = 1.0;
    parameters.gamm[1] = 1.0;
    parameters.user_qual = 2;
    parameters.adjust_maximum_thr = 0.0F;
    EXPECT_EQ(libRaw->unpack(), 0);
    EXPECT_EQ(libRaw->dcraw_process(), 0);
    const auto& sizes = libRaw->imgdata.sizes;
    Bitmap bitmap(sizes.width, sizes.height, Transfer::Linear);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (std::size_t i = 0; i < bitmap.row(y).size(); ++i) {
            const std::size_t pixel = static_cast<std::size_t>(y) * sizes.width + i / 3;
            bitmap.row(y)[i] = libRaw->imgdata.image[pixel][i % 3];
        }
    }
    return bitmap;
}

/// Peak signal to noise, in decibels, without the rim.
double closeness(const Bitmap& one, const Bitmap& other)
{
    constexpr int kRim = 4;
    double squares = 0.0;
    double count = 0.0;
    for (int y = kRim; y < one.pixelsHigh() - kRim; ++y) {
        const auto a = one.row(y);
        const auto b = other.row(y);
        for (std::size_t i = std::size_t{3} * kRim; i < a.size() - std::size_t{3} * kRim; ++i) {
            const double step = (a[i] - b[i]) / 65535.0;
            squares += step * step;
            count += 1.0;
        }
    }
    return 10.0 * std::log10(count / squares);
}

} // namespace

TEST(RawPhotoTest, coloursBetweenTheFiltersAreAsCloseAsPixelGroupingFindsThem)
{
    for (const quint32 seed : {1U, 2U, 3U}) {
        const Bitmap scene =
            SrgbTransfer::converted(SceneSamples::leaves({320, 240}, seed), Transfer::Linear);
        const QByteArray dng = ImageBuilder::dng(scene);
        EXPECT_GE(closeness(linearOf(dng), scene), closeness(byPixelGrouping(dng), scene)) << seed;
    }
}

TEST(RawPhotoTest, photosWithoutAMosaicAreTakenAsLibRawHasThem)
{
    const Bitmap scene = leaves({160, 120});
    const QByteArray dng =
        ImageBuilder::dng(scene, {.crop = {}, .preview = {}, .demosaiced = true});
    EXPECT_LT(ImageBuilder::difference(linearOf(dng), scene), 0.005);
    auto photo = RawPhoto::open(dng);
    ASSERT_TRUE(photo.ok());
    EXPECT_LT(ImageBuilder::difference(photo.value().someRows(), photo.value().linear()), 1e-9);
    const auto small = std::move(photo).value().rendered(Rendition::neutral(), {70, 50});
    ASSERT_TRUE(small.ok());
    EXPECT_EQ(small.value().size(), QSize(70, 50));
}

TEST(RawPhotoTest, aSensorThatClipsBelowItsLimitStillGivesWhite)
{
    // Red and blue are to be lightened twofold, green is at its end at nine tenths of the limit.
    Bitmap scene = BayerSamples::flat({160, 120}, {8000, 16000, 8000});
    for (int y = 30; y < 90; ++y) {
        std::fill_n(&scene.row(y)[150], 180, quint16{59000});
    }
    const Bitmap linear =
        linearOf(ImageBuilder::dng(scene, {.crop = {}, .preview = {}, .neutral = {0.5, 1.0, 0.5}}));
    const auto clipped = linear.row(60).subspan(240, 3);
    EXPECT_NEAR(clipped[0], clipped[1], 150);
    EXPECT_NEAR(clipped[2], clipped[1], 150);
    const auto grey = linear.row(10).subspan(60, 3);
    EXPECT_NEAR(grey[0], 16000, 150);
    EXPECT_NEAR(grey[1], 16000, 150);
}

TEST(RawPhotoTest, everySizeIsMadeFromLightOfTheWholePicture)
{
    const Bitmap scene = ImageBuilder::scene({402, 302}, Transfer::Linear);
    const QByteArray dng = ImageBuilder::dng(scene);
    for (const QSize size :
         {QSize(402, 302), QSize(300, 220), QSize(201, 151), QSize(120, 90), QSize(402, 10)}) {
        auto photo = RawPhoto::open(dng);
        ASSERT_TRUE(photo.ok());
        const auto picture = std::move(photo).value().rendered(Rendition::neutral(), size);
        ASSERT_TRUE(picture.ok());
        ASSERT_EQ(picture.value().size(), size);
        const Bitmap wanted = RenditionSamples::applied(
            Rendition::neutral(), ImageBuilder::scene(size, Transfer::Linear));
        EXPECT_LT(ImageBuilder::difference(BitmapImage::fromImage(picture.value()), wanted), 0.03)
            << size.width();
    }
}

TEST(RawPhotoTest, someRowsAreRowsOfThePicture)
{
    const Bitmap scene = leaves({64, 700});
    const auto photo = RawPhoto::open(ImageBuilder::dng(scene));
    ASSERT_TRUE(photo.ok());
    const Bitmap rows = photo.value().someRows();
    const Bitmap whole = photo.value().linear();
    EXPECT_LT(rows.pixelsHigh(), whole.pixelsHigh());
    EXPECT_TRUE(std::ranges::equal(rows.row(5), whole.row(5)));
    EXPECT_TRUE(
        std::ranges::equal(rows.row(rows.pixelsHigh() - 1), whole.row(whole.pixelsHigh() - 1)));
}
