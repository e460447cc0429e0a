#include "SourcePicture.h"

#include "BitmapImage.h"
#include "Correlation.h"
#include "ImageBuilder.h"
#include "JpegDestination.h"
#include "QtPrinters.h"
#include "RenditionSamples.h"
#include "SceneSamples.h"
#include "SrgbTransfer.h"

#include <QTemporaryDir>
#include <QTransform>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kSourceSize(320, 240);
constexpr ToneCurve::Slopes kSourceCurve{0.4, 1.2, 1.6, 1.3, 0.8, 0.5};

QByteArray jpegOf(const Bitmap& bitmap)
{
    const auto jpeg = JpegDestination::encodePlain(bitmap, 0.95);
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

Bitmap leaves()
{
    return SrgbTransfer::converted(SceneSamples::leaves(kSourceSize), Transfer::Linear);
}

/// The steps from each pixel's green to the next one's.
std::vector<float> detailOf(const Bitmap& bitmap)
{
    std::vector<float> steps;
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto row = bitmap.row(y);
        for (std::size_t i = 4; i < row.size(); i += 3) {
            steps.push_back(static_cast<float>(row[i] - row[i - 3]));
        }
    }
    return steps;
}

bool isSame(const Bitmap& one, const Bitmap& other)
{
    bool same = one.size() == other.size();
    for (int y = 0; same && y < one.pixelsHigh(); ++y) {
        same = std::ranges::equal(one.row(y), other.row(y));
    }
    return same;
}

class SourcePictureTest : public testing::Test
{
protected:
    /// A RAW photo of leaves with that preview in its file, rendered as it wants.
    [[nodiscard]] Bitmap rendered(const QByteArray& preview, QSize size = kSourceSize) const
    {
        return renderedOf(ImageBuilder::dng(leaves(), {.crop = {}, .preview = preview}), size);
    }

    [[nodiscard]] Bitmap renderedOf(const QByteArray& bytes, QSize size) const
    {
        const QString path = m_folder.filePath(u"photo.dng"_s);
        ImageBuilder::write(path, bytes);
        auto opened = SourcePicture::open(path);
        EXPECT_TRUE(opened.ok());
        if (!opened.ok()) {
            return {};
        }
        SourcePicture picture = std::move(opened).value();
        QList<QImage> references;
        if (picture.preview()) {
            references.append(picture.preview()->image);
        }
        const auto image = std::move(picture).rendered(size, references);
        EXPECT_TRUE(image.ok());
        return image.ok() ? BitmapImage::fromImage(image.value()) : Bitmap();
    }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(SourcePictureTest, aRawPhotoLooksLikeItsPreviewInEverySize)
{
    const Rendition camera(kIdentityMatrix, 0.7, ToneCurve(kSourceCurve));
    const QByteArray preview = jpegOf(RenditionSamples::applied(camera, leaves()));
    EXPECT_LT(
        ImageBuilder::difference(rendered(preview), RenditionSamples::applied(camera, leaves())),
        0.03);
    // Smaller ones need not be scaled from the whole in the same way.
    const Bitmap half = rendered(preview, kSourceSize / 2);
    EXPECT_EQ(half.size(), kSourceSize / 2);
    const Bitmap wanted = BitmapImage::fromImage(
        BitmapImage::toImage(RenditionSamples::applied(camera, leaves()))
            .scaled(kSourceSize / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    EXPECT_LT(ImageBuilder::difference(half, wanted), 0.04);
}

TEST_F(SourcePictureTest, aPreviewOfAnotherSceneChangesNothing)
{
    const Bitmap alone = rendered({});
    EXPECT_TRUE(isSame(rendered(jpegOf(SceneSamples::leaves(kSourceSize, 2))), alone));
    EXPECT_TRUE(isSame(rendered(jpegOf(ImageBuilder::scene(kSourceSize))), alone));
    EXPECT_TRUE(isSame(rendered(jpegOf(ImageBuilder::flat(kSourceSize, 30000))), alone));
}

TEST_F(SourcePictureTest, theLargestPreviewThatShowsTheSceneIsFollowed)
{
    const Rendition camera(kIdentityMatrix, 0.7, ToneCurve(kSourceCurve));
    const Bitmap wanted = RenditionSamples::applied(camera, leaves());
    const QByteArray small = jpegOf(BitmapImage::fromImage(BitmapImage::toImage(wanted).scaled(
        160, 120, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    const QByteArray other = jpegOf(SceneSamples::leaves(kSourceSize, 2));
    const QByteArray flat = jpegOf(ImageBuilder::flat(kSourceSize, 30000));
    const QByteArray damaged = jpegOf(wanted).first(1500);
    for (const QByteArray& largest : {other, flat, damaged}) {
        const Bitmap picture = renderedOf(
            ImageBuilder::dng(leaves(), {.crop = {}, .preview = largest, .secondPreview = small}),
            kSourceSize);
        EXPECT_LT(ImageBuilder::difference(picture, wanted), 0.03);
    }
}

TEST_F(SourcePictureTest, ofTwoPreviewsOfOneSizeTheOneThatDecodesIsFollowed)
{
    const Rendition camera(kIdentityMatrix, 0.7, ToneCurve(kSourceCurve));
    const Bitmap wanted = RenditionSamples::applied(camera, leaves());
    const QByteArray good = jpegOf(wanted);
    const Bitmap picture =
        renderedOf(ImageBuilder::dng(
                       leaves(), {.crop = {}, .preview = good.first(1500), .secondPreview = good}),
                   kSourceSize);
    EXPECT_LT(ImageBuilder::difference(picture, wanted), 0.03);
}

TEST_F(SourcePictureTest, thePreviewGivesTonesAndNoDetail)
{
    const Bitmap alone = rendered({});
    const Bitmap camera = RenditionSamples::applied(
        Rendition(kIdentityMatrix, 0.7, ToneCurve(kSourceCurve)), leaves());
    // Without any detail, and with some that the photo has not.
    QImage coarse = BitmapImage::toImage(camera).scaled(
        32, 24, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QImage retouched = BitmapImage::toImage(camera);
    for (int y = 40; y < 80; ++y) {
        for (int x = 200; x < 260; ++x) {
            retouched.setPixelColor(x, y, (x + y) % 8 < 4 ? Qt::yellow : Qt::blue);
        }
    }
    for (const QImage& image : {coarse, retouched}) {
        const Bitmap guided = rendered(jpegOf(BitmapImage::fromImage(image)));
        ASSERT_FALSE(isSame(guided, alone)); // it was followed
        EXPECT_GT(Correlation::ofValues(detailOf(guided), detailOf(alone)), 0.95);
    }
}

TEST_F(SourcePictureTest, theSizeIsThatOfTheFileUntilItIsRendered)
{
    const QString path = m_folder.filePath(u"scene.jpg"_s);
    ImageBuilder::write(path, jpegOf(ImageBuilder::scene(kSourceSize)));
    auto opened = SourcePicture::open(path);
    ASSERT_TRUE(opened.ok());
    EXPECT_EQ(opened.value().size(), kSourceSize);
    EXPECT_FALSE(opened.value().preview().has_value());
    const auto small = std::move(opened).value().rendered({100, 10}, {});
    ASSERT_TRUE(small.ok());
    EXPECT_EQ(small.value().size(), QSize(100, 10));
}

TEST_F(SourcePictureTest, picturesThatAreNoRawPhotosAreTakenAsTheyAre)
{
    const QString path = m_folder.filePath(u"scene.jpg"_s);
    ImageBuilder::write(path, jpegOf(ImageBuilder::scene(kSourceSize)));
    auto opened = SourcePicture::open(path);
    auto again = SourcePicture::open(path);
    ASSERT_TRUE(opened.ok() && again.ok());
    const Bitmap decoded = std::move(again).value().decoded();
    const QImage brighter = BitmapImage::toImage(RenditionSamples::applied(
        Rendition::neutral(1.0), ImageBuilder::scene(kSourceSize, Transfer::Linear)));
    const auto picture = std::move(opened).value().rendered(kSourceSize, {brighter});
    ASSERT_TRUE(picture.ok());
    EXPECT_TRUE(picture.value() == BitmapImage::toImage(decoded));
}

TEST_F(SourcePictureTest, aSizeWithoutPixelsIsAnError)
{
    const QString path = m_folder.filePath(u"photo.dng"_s);
    ImageBuilder::write(path, ImageBuilder::dng(leaves()));
    auto opened = SourcePicture::open(path);
    ASSERT_TRUE(opened.ok());
    EXPECT_FALSE(std::move(opened).value().rendered({0, 10}, {}).ok());
}
