#include "PhotoRenderer.h"

#include "ImageProperties.h"
#include "ImageSource.h"
#include "JpegDecoder.h"
#include "SamplePlan.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <future>

using namespace Qt::StringLiterals;

namespace
{

Shot shotOf(SceneMaker scene, Orientation orientation = Orientation::Upright)
{
    Shot shot;
    shot.scene = scene;
    shot.seed = 5;
    shot.picture = {600, 400};
    shot.facts.taken = QDateTime(QDate(2011, 5, 14), QTime(8, 42, 17, 310), Qt::UTC);
    shot.facts.orientation = orientation;
    return shot;
}

Bitmap decodeDng(const QByteArray& dng)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"photo.dng"_s);
    QFile file(path);
    if (!folder.isValid() || !file.open(QIODevice::WriteOnly) || file.write(dng) != dng.size()) {
        ADD_FAILURE() << "no file to decode";
        return {};
    }
    file.close();
    auto decoded = ImageSource::decode(path);
    if (!decoded.ok()) {
        ADD_FAILURE() << decoded.error().message.toStdString();
        return {};
    }
    return std::move(decoded).value();
}

/// A stored value as light, 0 to 1.
double lightOf(quint16 value, Transfer transfer)
{
    const double encoded = value / 65535.0;
    if (transfer == Transfer::Linear) {
        return encoded;
    }
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

/// Mean light of a square around a point, in pixels.
std::array<double, 3> meanAround(const Bitmap& bitmap, int middleX, int middleY, int half)
{
    std::array<double, 3> sums{};
    for (int y = middleY - half; y <= middleY + half; ++y) {
        const auto row = bitmap.row(y);
        for (int x = middleX - half; x <= middleX + half; ++x) {
            for (size_t channel = 0; channel < 3; ++channel) {
                sums[channel] +=
                    lightOf(row[static_cast<size_t>(x) * 3 + channel], bitmap.transfer());
            }
        }
    }
    for (double& sum : sums) {
        sum /= (2 * half + 1) * (2 * half + 1);
    }
    return sums;
}

/// Compares the light of places all over both.
void expectSameLight(const Bitmap& picture, const Bitmap& wanted)
{
    for (int y = 40; y < 400; y += 80) {
        for (int x = 40; x < 600; x += 80) {
            const auto left = meanAround(picture, x, y, 16);
            const auto right = meanAround(wanted, x, y, 16);
            for (size_t channel = 0; channel < 3; ++channel) {
                EXPECT_NEAR(left[channel], right[channel], 0.02 + 0.08 * right[channel])
                    << x << ", " << y;
            }
        }
    }
}

} // namespace

TEST(PhotoRendererTest, sizesFollowMegapixelsAndAspect)
{
    EXPECT_EQ(PhotoRenderer::pictureSize(6.0, 1.5), QSize(3000, 2000));
    EXPECT_EQ(PhotoRenderer::pictureSize(3.0, 4.0 / 3.0), QSize(2000, 1500));
    const QSize odd = PhotoRenderer::pictureSize(0.05, 1.5);
    EXPECT_EQ(odd.width() % 4, 0);
    EXPECT_EQ(odd.height() % 4, 0);
    EXPECT_NEAR(odd.width() * odd.height(), 50000, 1500);
}

TEST(PhotoRendererTest, patchesOfTheChartKeepTheirColoursThroughTheCamera)
{
    const auto photo = PhotoRenderer::takeRaw(shotOf(Scenes::chart));
    ASSERT_TRUE(photo.ok());
    const Bitmap decoded = decodeDng(photo.value().dng);
    ASSERT_EQ(decoded.size(), QSize(600, 400));
    for (int i = 0; i < Scenes::kChartPatches; ++i) {
        const Scenes::ChartPatch patch = Scenes::chartPatch(i);
        const auto seen = meanAround(
            decoded, static_cast<int>(patch.x * 400.0F), static_cast<int>(patch.y * 400.0F), 12);
        const std::array<double, 3> wanted{patch.colour.red, patch.colour.green, patch.colour.blue};
        for (size_t channel = 0; channel < 3; ++channel) {
            // 4 % of the light and a little for noise, demosaicing and rounded matrices.
            EXPECT_NEAR(seen[channel], wanted[channel], 0.006 + 0.04 * wanted[channel])
                << "patch " << i << ", channel " << channel;
        }
    }
}

TEST(PhotoRendererTest, lightBeyondWhiteIsWhiteInDecodeAndPreview)
{
    const auto photo = PhotoRenderer::takeRaw(shotOf(Scenes::chart));
    ASSERT_TRUE(photo.ok());
    const auto preview = JpegDecoder::decode(photo.value().preview);
    ASSERT_TRUE(preview.ok());
    const auto shown = meanAround(preview.value(), 8, 8, 4);
    const Bitmap picture = decodeDng(photo.value().dng);
    ASSERT_FALSE(picture.isNull());
    const auto decoded = meanAround(picture, 8, 8, 4);
    for (size_t channel = 0; channel < 3; ++channel) {
        EXPECT_GT(decoded[channel], 0.97) << "channel " << channel;
        EXPECT_GT(shown[channel], 0.97) << "channel " << channel;
    }
}

TEST(PhotoRendererTest, theRenderingShowsWhatTheRawDataHolds)
{
    for (const SceneMaker scene :
         {Scenes::hills, Scenes::lake, Scenes::stillLife, Scenes::brickWall}) {
        const auto photo = PhotoRenderer::takeRaw(shotOf(scene));
        ASSERT_TRUE(photo.ok());
        const auto preview = JpegDecoder::decode(photo.value().preview);
        ASSERT_TRUE(preview.ok());
        const Bitmap decoded = decodeDng(photo.value().dng);
        ASSERT_EQ(preview.value().size(), decoded.size());
        expectSameLight(decoded, preview.value());
    }
}

TEST(PhotoRendererTest, aPortraitIsStoredLyingAndRenderedUpright)
{
    const auto photo = PhotoRenderer::takeRaw(shotOf(Scenes::portrait, Orientation::TurnClockwise));
    ASSERT_TRUE(photo.ok());
    const auto upright = JpegDecoder::decode(photo.value().preview);
    ASSERT_TRUE(upright.ok());
    ASSERT_EQ(upright.value().size(), QSize(400, 600));
    const Bitmap stored = decodeDng(photo.value().dng);
    ASSERT_EQ(stored.size(), QSize(600, 400));
    // Turned clockwise, the left edge of the stored picture becomes the top.
    for (int y = 50; y < 600; y += 100) {
        for (int x = 50; x < 400; x += 100) {
            const auto shown = meanAround(upright.value(), x, y, 14);
            const auto lying = meanAround(stored, y, 399 - x, 14);
            for (size_t channel = 0; channel < 3; ++channel) {
                EXPECT_NEAR(lying[channel], shown[channel], 0.02 + 0.1 * shown[channel])
                    << x << ", " << y;
            }
        }
    }
}

TEST(PhotoRendererTest, theOtherWayOfHoldingTurnsTheOtherWay)
{
    const auto photo =
        PhotoRenderer::takeRaw(shotOf(Scenes::portrait, Orientation::TurnAnticlockwise));
    ASSERT_TRUE(photo.ok());
    const auto upright = JpegDecoder::decode(photo.value().preview);
    ASSERT_TRUE(upright.ok());
    const Bitmap stored = decodeDng(photo.value().dng);
    const auto shown = meanAround(upright.value(), 300, 100, 14);
    const auto lying = meanAround(stored, 599 - 100, 300, 14);
    for (size_t channel = 0; channel < 3; ++channel) {
        EXPECT_NEAR(lying[channel], shown[channel], 0.02 + 0.1 * shown[channel]);
    }
}

TEST(PhotoRendererTest, theSameShotGivesTheSameBytesOnAnyThread)
{
    const Shot shot = shotOf(Scenes::flowers);
    auto elsewhere =
        std::async(std::launch::async, [&shot] { return PhotoRenderer::takeRaw(shot); });
    const auto here = PhotoRenderer::takeRaw(shot);
    const auto there = elsewhere.get();
    ASSERT_TRUE(here.ok() && there.ok());
    EXPECT_EQ(here.value().dng, there.value().dng);
    EXPECT_EQ(here.value().preview, there.value().preview);
    Shot other = shot;
    other.seed = 6;
    EXPECT_NE(PhotoRenderer::takeRaw(other).value().dng, here.value().dng);
}

TEST(PhotoRendererTest, aJpegPhotoCarriesItsOwnMetadata)
{
    Shot shot = shotOf(Scenes::lake);
    shot.facts.keywords = {u"Garten"_s};
    shot.facts.position = Place{53.5, 10.5, 12.0};
    const auto jpeg = PhotoRenderer::takeJpeg(shot);
    ASSERT_TRUE(jpeg.ok());
    EXPECT_EQ(JpegDecoder::decode(jpeg.value()).value().size(), QSize(600, 400));
    const ImageFacts facts = ImageProperties::fromBytes(jpeg.value()).value().facts();
    EXPECT_EQ(facts.keywords, QStringList{u"Garten"_s});
    EXPECT_NEAR(facts.latitude.value_or(0.0), 53.5, 1e-8);
    EXPECT_EQ(facts.dateTaken, shot.facts.taken);
}

TEST(PhotoRendererTest, theEmbeddedPreviewOfALargePhotoIsSmaller)
{
    Shot shot = shotOf(Scenes::chart);
    shot.picture = PhotoRenderer::pictureSize(3.0, 1.5);
    const auto photo = PhotoRenderer::takeRaw(shot);
    ASSERT_TRUE(photo.ok());
    const QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QFile file(folder.filePath(u"photo.dng"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(photo.value().dng);
    file.close();
    const auto preview = ImageSource::embeddedPreview(file.fileName());
    ASSERT_TRUE(preview.has_value());
    EXPECT_EQ(preview->size(), shot.picture / 2);
}
