#include "JpegProof.h"

#include "BitmapImage.h"
#include "ImageBuilder.h"
#include "ImageSource.h"
#include "JpegDestination.h"
#include "JpegEncoder.h"
#include "QtPrinters.h"
#include "SrgbTransfer.h"

#include <QDir>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kProvedSize(200, 152);

QByteArray jpegOf(const Bitmap& bitmap, double quality)
{
    const auto jpeg = JpegDestination::encodePlain(bitmap, quality);
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

Bitmap times(Bitmap bitmap, double factor)
{
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (quint16& value : bitmap.row(y)) {
            value = static_cast<quint16>(value * factor);
        }
    }
    return bitmap;
}

/// The scene with every linear value times `factor`.
Bitmap darkened(double factor)
{
    return times(ImageBuilder::scene(kProvedSize, Transfer::Linear), factor);
}

Bitmap withRedAndBlueExchanged(const Bitmap& bitmap)
{
    Bitmap exchanged = bitmap;
    for (int y = 0; y < exchanged.pixelsHigh(); ++y) {
        const auto row = exchanged.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            std::swap(row[i], row[i + 2]);
        }
    }
    return exchanged;
}

Result<void> proofOf(const QByteArray& jpeg, const Bitmap& encoded, const QList<QImage>& references)
{
    return JpegProof::prove(
        jpeg, BitmapImage::toImage(encoded), references, JpegProof::Source::Sensor);
}

void expectRefused(const QByteArray& jpeg, const Bitmap& encoded, const QList<QImage>& references)
{
    const auto proof = proofOf(jpeg, encoded, references);
    ASSERT_FALSE(proof.ok());
    // What speaks against the photo is told apart from what went wrong in making its JPEG.
    EXPECT_EQ(proof.error().code, references.isEmpty() ? ErrorCode::Internal : ErrorCode::Damaged);
    EXPECT_FALSE(proof.error().message.isEmpty());
}

} // namespace

TEST(JpegProofTest, picturesPassAtEveryQuality)
{
    const Bitmap scene = ImageBuilder::scene(kProvedSize, Transfer::Linear);
    for (const double quality : {0.0, 0.1, 0.3, 0.5, 0.7, 0.9, 1.0}) {
        const auto proof = proofOf(jpegOf(scene, quality), scene, {});
        EXPECT_TRUE(proof.ok()) << quality
                                << qPrintable(proof.ok() ? QString() : proof.error().message);
    }
}

TEST(JpegProofTest, evenNoisePassesAsItself)
{
    const Bitmap noise = ImageBuilder::noise(kProvedSize);
    EXPECT_TRUE(proofOf(jpegOf(noise, 0.5), noise, {}).ok());
}

TEST(JpegProofTest, flatPictureOfAFlatSourcePasses)
{
    const Bitmap flat = ImageBuilder::flat(kProvedSize, 20000);
    EXPECT_TRUE(proofOf(jpegOf(flat, 0.8), flat, {}).ok());
}

TEST(JpegProofTest, fileThatEndsEarlyIsRefused)
{
    const Bitmap scene = ImageBuilder::scene(kProvedSize);
    const QByteArray jpeg = jpegOf(scene, 0.8);
    expectRefused(jpeg.chopped(2), scene, {});
    expectRefused(jpeg.first(jpeg.size() / 2), scene, {});
    expectRefused({}, scene, {});
}

TEST(JpegProofTest, otherSizeIsRefused)
{
    const Bitmap scene = ImageBuilder::scene(kProvedSize);
    expectRefused(jpegOf(ImageBuilder::scene({200, 151}), 0.8), scene, {});
}

TEST(JpegProofTest, otherPictureIsRefused)
{
    expectRefused(
        jpegOf(ImageBuilder::noise(kProvedSize), 0.8), ImageBuilder::scene(kProvedSize), {});
}

TEST(JpegProofTest, pictureWhoseLastRowsAreMissingIsRefused)
{
    const Bitmap scene = ImageBuilder::scene(kProvedSize);
    Bitmap cut = scene;
    for (int y = kProvedSize.height() - 8; y < kProvedSize.height(); ++y) {
        std::ranges::fill(cut.row(y), quint16{65535});
    }
    expectRefused(jpegOf(cut, 0.8), scene, {});
}

TEST(JpegProofTest, largePicturesPassAtEveryQualityAndChroma)
{
    const Bitmap scene = ImageBuilder::scene({1037, 531});
    for (const double quality : {0.0, 0.3, 0.8, 1.0}) {
        const auto jpeg = JpegDestination::encode(scene, ImageProperties(), quality);
        ASSERT_TRUE(jpeg.ok());
        const auto proof = proofOf(jpeg.value(), scene, {});
        EXPECT_TRUE(proof.ok()) << quality
                                << qPrintable(proof.ok() ? QString() : proof.error().message);
    }
}

TEST(JpegProofTest, checksOfPureColoursPassAtEveryQuality)
{
    for (const QSize size : {QSize(203, 155), QSize(1037, 531)}) {
        Bitmap checks(size.width(), size.height(), Transfer::Srgb);
        for (int y = 0; y < size.height(); ++y) {
            const auto row = checks.row(y);
            for (std::size_t i = 0; i < row.size(); i += 3) {
                row[i + (i / 36 + static_cast<std::size_t>(y / 12)) % 3] = 65535;
            }
        }
        for (const double quality : {0.0, 0.1, 0.3, 0.8, 0.95}) {
            const auto proof = proofOf(jpegOf(checks, quality), checks, {});
            EXPECT_TRUE(proof.ok())
                << quality << qPrintable(proof.ok() ? QString() : proof.error().message);
        }
    }
}

TEST(JpegProofTest, aSingleWrongBlockOfALargePictureIsRefused)
{
    const QSize size(1037, 531);
    const Bitmap scene = ImageBuilder::scene(size);
    for (const QPoint corner : {QPoint(0, 0), QPoint(512, 256), QPoint(1032, 520)}) {
        Bitmap wrong = scene;
        for (int y = corner.y(); y < std::min(corner.y() + 8, size.height()); ++y) {
            const auto row = wrong.row(y);
            for (int x = corner.x(); x < std::min(corner.x() + 8, size.width()); ++x) {
                const std::size_t at = 3 * static_cast<std::size_t>(x);
                const quint16 other = row[at + 1] < 32768 ? 65535 : 0;
                std::fill_n(&row[at], 3, other);
            }
        }
        expectRefused(jpegOf(wrong, 0.8), scene, {});
    }
}

TEST(JpegProofTest, aLargePictureThatIsCutOrLacksItsLastRowsIsRefused)
{
    const QSize size(1037, 531);
    const Bitmap scene = ImageBuilder::scene(size);
    expectRefused(jpegOf(scene, 0.8).chopped(40), scene, {});
    Bitmap cut = scene;
    for (int y = size.height() - 8; y < size.height(); ++y) {
        std::ranges::fill(cut.row(y), quint16{65535});
    }
    expectRefused(jpegOf(cut, 0.8), scene, {});
}

TEST(JpegProofTest, flatPictureOfAScenePhotoIsRefused)
{
    expectRefused(
        jpegOf(ImageBuilder::flat(kProvedSize, 30000), 0.8), ImageBuilder::scene(kProvedSize), {});
}

TEST(JpegProofTest, exchangedColoursAreRefused)
{
    const Bitmap scene = ImageBuilder::scene(kProvedSize);
    const Bitmap exchanged = withRedAndBlueExchanged(scene);
    expectRefused(jpegOf(exchanged, 0.95), scene, {});
}

TEST(JpegProofTest, referenceOfTheSameSceneBoundsTheLightness)
{
    const QImage reference = BitmapImage::toImage(ImageBuilder::scene({160, 120}));
    // Down to three stops and more: highlight programmes, and a preview that is lighter anyhow.
    for (const double factor : {0.4, 0.25, 0.1}) {
        const Bitmap right = darkened(factor);
        EXPECT_TRUE(proofOf(jpegOf(right, 0.8), right, {reference}).ok()) << factor;
    }
    for (const double factor : {0.02, 0.005}) {
        const Bitmap black = darkened(factor);
        expectRefused(jpegOf(black, 1.0), black, {reference});
    }
    const Bitmap scene = ImageBuilder::scene(kProvedSize, Transfer::Linear);
    expectRefused(jpegOf(scene, 1.0), scene, {BitmapImage::toImage(darkened(0.02))});
}

TEST(JpegProofTest, photosTwoStopsDarkerThanTheirPreviewsPass)
{
    const QDir data(QStringLiteral(CORVANE_SHARED_DATA));
    for (const QString& name : {u"raw/skia_rotated_small.dng"_s,
                                u"raw/canon_d30.crw"_s,
                                u"masters/IMG_1994.cr2"_s,
                                u"masters/IMG_1997.cr2"_s}) {
        if (!data.exists(name)) {
            continue;
        }
        const auto decoded = ImageSource::decode(data.filePath(name));
        const auto preview = ImageSource::embeddedPreview(data.filePath(name));
        ASSERT_TRUE(decoded.ok() && preview.has_value()) << qPrintable(name);
        const Bitmap darker = times(decoded.value(), 0.25);
        EXPECT_TRUE(proofOf(jpegOf(darker, 0.8), darker, {*preview}).ok()) << qPrintable(name);
    }
}

TEST(JpegProofTest, referenceOfTheSameSceneBoundsTheColours)
{
    const QImage reference = BitmapImage::toImage(ImageBuilder::scene({160, 120}));
    const Bitmap scene = ImageBuilder::scene(kProvedSize);
    EXPECT_TRUE(proofOf(jpegOf(scene, 0.9), scene, {reference}).ok());
    const Bitmap exchanged = withRedAndBlueExchanged(scene);
    const QByteArray jpeg = jpegOf(exchanged, 0.9);
    expectRefused(jpeg, exchanged, {reference});
    expectRefused(jpeg, exchanged, {reference.transformed(QTransform().rotate(90))});
    EXPECT_TRUE(proofOf(jpeg, exchanged, {reference.rgbSwapped()}).ok());
}

TEST(JpegProofTest, referenceInBlackAndWhiteOrTonedProvesNothingOfColours)
{
    const Bitmap scene = ImageBuilder::scene(kProvedSize);
    const QImage grey = BitmapImage::toImage(ImageBuilder::scene({160, 120}))
                            .convertToFormat(QImage::Format_Grayscale8);
    QImage toned = grey.convertToFormat(QImage::Format_RGB888);
    for (int y = 0; y < toned.height(); ++y) {
        uchar* const row = toned.scanLine(y);
        for (int x = 0; x < toned.width(); ++x) {
            row[3 * x + 2] = static_cast<uchar>(row[3 * x + 2] * 2 / 3);
        }
    }
    EXPECT_TRUE(proofOf(jpegOf(scene, 0.8), scene, {grey, toned}).ok());
}

TEST(JpegProofTest, turnedReferenceShowsTheSameScene)
{
    const QImage reference =
        BitmapImage::toImage(ImageBuilder::scene({160, 120})).transformed(QTransform().rotate(90));
    const Bitmap black = darkened(0.02);
    expectRefused(jpegOf(black, 1.0), black, {reference});
}

TEST(JpegProofTest, referenceOfAnotherSceneOrOfNoneProvesNothing)
{
    const Bitmap scene = ImageBuilder::scene(kProvedSize);
    const QList<QImage> references{
        BitmapImage::toImage(ImageBuilder::flat({160, 120}, 0)),
        BitmapImage::toImage(ImageBuilder::noise({160, 120})),
        BitmapImage::toImage(ImageBuilder::scene({160, 120})).mirrored(false, true),
        BitmapImage::toImage(ImageBuilder::scene({8, 8})),
        QImage()};
    EXPECT_TRUE(proofOf(jpegOf(scene, 0.8), scene, references).ok());
}
