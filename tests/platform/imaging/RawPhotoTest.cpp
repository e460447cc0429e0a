#include "RawPhoto.h"

#include "BayerSamples.h"
#include "BitmapImage.h"
#include "DemosaicingSamples.h"
#include "ImageBuilder.h"
#include "QtPrinters.h"
#include "RenditionSamples.h"
#include "SceneSamples.h"
#include "SrgbTransfer.h"

#include <QDataStream>
#include <QIODevice>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

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

/// A black photo of a medium-format back: compressed data whose corrections lie elsewhere in the
/// file.
QByteArray photoOfABack(QSize size)
{
    constexpr quint32 kHeader = 12;
    constexpr quint32 kCorrections = kHeader + 8 + 9 * 16;
    constexpr quint32 kStrips = kCorrections + 64;
    constexpr quint32 kCompressed = 3;
    const auto width = static_cast<quint32>(size.width());
    const auto height = static_cast<quint32>(size.height());
    const quint32 data = kStrips + 4 * height;

    struct Entry {
        quint32 tag;
        quint32 length;
        quint32 value;
    };

    const std::array<Entry, 9> entries{{{0x108, 4, width},
                                        {0x109, 4, height},
                                        {0x10c, 4, width},
                                        {0x10d, 4, height},
                                        {0x10e, 4, kCompressed},
                                        {0x10f, 0, data},
                                        {0x110, 64, kCorrections},
                                        {0x21c, 4 * height, kStrips},
                                        {0x21d, 4, 0}}};
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << 0x49494949U << 0x52617754U << kHeader << static_cast<quint32>(entries.size()) << 0U;
    for (const Entry& entry : entries) {
        stream << entry.tag << 4U << entry.length << entry.value;
    }
    // No corrections, strips that begin at the data, and codes of zeros, all zeros.
    return bytes +
           QByteArray(qsizetype{data} + qsizetype{4} * size.width() * size.height() - bytes.size(),
                      '\0');
}

} // namespace

TEST(RawPhotoTest, coloursBetweenTheFiltersAreAsCloseAsPixelGroupingFindsThem)
{
    for (const quint32 seed : {1U, 2U, 3U}) {
        const Bitmap scene =
            SrgbTransfer::converted(SceneSamples::leaves({320, 240}, seed), Transfer::Linear);
        const QByteArray dng = ImageBuilder::dng(scene);
        EXPECT_GE(Demosaicing::closeness(linearOf(dng), scene),
                  Demosaicing::closeness(
                      Demosaicing::byLibRaw(dng, Demosaicing::Interpolation::PixelGrouping), scene))
            << seed;
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

TEST(RawPhotoTest, correctionsThatLieElsewhereInTheFileAreRead)
{
    const auto photo = RawPhoto::open(photoOfABack({128, 96}));
    ASSERT_TRUE(photo.ok()) << qPrintable(photo.error().message);
    EXPECT_EQ(photo.value().size(), QSize(128, 96));
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
    for (const bool demosaiced : {false, true}) {
        const auto photo = RawPhoto::open(
            ImageBuilder::dng(scene, {.crop = {}, .preview = {}, .demosaiced = demosaiced}));
        ASSERT_TRUE(photo.ok());
        const Bitmap rows = photo.value().someRows();
        const Bitmap whole = photo.value().linear();
        EXPECT_LT(rows.pixelsHigh(), whole.pixelsHigh());
        EXPECT_TRUE(std::ranges::equal(rows.row(5), whole.row(5)));
        EXPECT_TRUE(
            std::ranges::equal(rows.row(rows.pixelsHigh() - 1), whole.row(whole.pixelsHigh() - 1)));
    }
}
