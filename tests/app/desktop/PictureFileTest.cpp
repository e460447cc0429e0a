#include "PictureFile.h"

#include "BitmapImage.h"
#include "ImageBuilder.h"
#include "PictureFolder.h"

#include <QBuffer>
#include <QColorSpace>
#include <QTransform>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class PictureFileTest : public testing::Test
{
protected:
    PictureFolder m_folder;
};

TEST_F(PictureFileTest, aPictureIsFittedWithItsAspectKept)
{
    const QString path = m_folder.jpeg(u"wide.jpg"_s, QSize(300, 200), Qt::green);
    const Result<QImage> image =
        PictureFile::read(path, QSize(120, 120), PictureFile::Turn::AsTagged);
    ASSERT_TRUE(image.ok());
    EXPECT_EQ(image.value().size(), QSize(120, 80));
    EXPECT_EQ(image.value().format(), QImage::Format_RGB32);
}

TEST_F(PictureFileTest, aSmallPictureIsNotEnlarged)
{
    const QString path = m_folder.jpeg(u"small.jpg"_s, QSize(30, 20), Qt::green);
    const Result<QImage> image =
        PictureFile::read(path, QSize(500, 500), PictureFile::Turn::AsTagged);
    ASSERT_TRUE(image.ok());
    EXPECT_EQ(image.value().size(), QSize(30, 20));
}

TEST_F(PictureFileTest, theOrientationTagIsObeyedWhereAskedFor)
{
    const QString path = m_folder.jpeg(u"turned.jpg"_s, QSize(300, 200), Qt::green, 6);
    const Result<QImage> tagged =
        PictureFile::read(path, QSize(90, 120), PictureFile::Turn::AsTagged);
    ASSERT_TRUE(tagged.ok());
    EXPECT_EQ(tagged.value().size(), QSize(80, 120));
    const Result<QImage> stored =
        PictureFile::read(path, QSize(90, 120), PictureFile::Turn::AsStored);
    ASSERT_TRUE(stored.ok());
    EXPECT_EQ(stored.value().size(), QSize(90, 60));
}

TEST_F(PictureFileTest, aPictureOfAnotherColourSpaceIsConvertedForTheScreen)
{
    QImage image(20, 20, QImage::Format_RGB32);
    image.fill(QColor(0, 200, 0));
    image.setColorSpace(QColorSpace::AdobeRgb);
    const QString path = m_folder.path(u"adobe.png"_s);
    ASSERT_TRUE(image.save(path));
    const Result<QImage> shown =
        PictureFile::read(path, QSize(20, 20), PictureFile::Turn::AsTagged);
    ASSERT_TRUE(shown.ok());
    // The green of Adobe RGB lies outside of sRGB.
    EXPECT_GT(shown.value().pixelColor(5, 5).green(), 200);
}

TEST_F(PictureFileTest, aRawPhotoLooksAsItsPreviewAndLiesAsTagged)
{
    const QImage preview = BitmapImage::toImage(ImageBuilder::scene({300, 200}));
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    ASSERT_TRUE(preview.save(&buffer, "JPG", 95));
    // The sensor saw half of the light that the camera's own picture shows.
    Bitmap light = ImageBuilder::scene({300, 200}, Transfer::Linear);
    for (int y = 0; y < light.pixelsHigh(); ++y) {
        for (quint16& value : light.row(y)) {
            value /= 2;
        }
    }
    const QString path = m_folder.bytes(
        u"turned.dng"_s, ImageBuilder::dng(light, {.crop = {}, .preview = jpeg, .orientation = 6}));
    const Result<QImage> stored =
        PictureFile::read(path, QSize(120, 120), PictureFile::Turn::AsStored);
    ASSERT_TRUE(stored.ok()) << stored.error().message.toStdString();
    ASSERT_EQ(stored.value().size(), QSize(120, 80));
    EXPECT_LT(
        ImageBuilder::difference(BitmapImage::fromImage(stored.value()),
                                 BitmapImage::fromImage(preview.scaled(
                                     120, 80, Qt::IgnoreAspectRatio, Qt::SmoothTransformation))),
        0.03);
    const Result<QImage> tagged =
        PictureFile::read(path, QSize(80, 120), PictureFile::Turn::AsTagged);
    ASSERT_TRUE(tagged.ok());
    EXPECT_EQ(tagged.value(), stored.value().transformed(QTransform().rotate(90)));
}

TEST_F(PictureFileTest, failuresNameTheFileAndTheirKind)
{
    const auto errorOf = [](const QString& path) {
        return PictureFile::read(path, QSize(9, 9), PictureFile::Turn::AsTagged).error();
    };
    const QString missing = m_folder.path(u"none.jpg"_s);
    EXPECT_EQ(errorOf(missing).code, ErrorCode::NotFound);
    EXPECT_TRUE(errorOf(missing).message.contains(missing));
    const QString text = m_folder.bytes(u"text.jpg"_s, "this is no picture");
    EXPECT_EQ(errorOf(text).code, ErrorCode::Unsupported);
    EXPECT_TRUE(errorOf(text).message.contains(text));
    const QString damaged = m_folder.bytes(u"damaged.jpg"_s, "\xFF\xD8\xFF\xE0 and no more");
    EXPECT_FALSE(PictureFile::read(damaged, QSize(9, 9), PictureFile::Turn::AsTagged).ok());
    const QString folder = QFileInfo(missing).path();
    EXPECT_EQ(errorOf(folder).code, ErrorCode::Unreadable);
}

} // namespace
