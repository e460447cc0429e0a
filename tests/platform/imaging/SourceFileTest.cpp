#include "SourceFile.h"

#include "BitmapImage.h"
#include "ImageBuilder.h"

#include <QBuffer>
#include <QColorSpace>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <exiv2/exiv2.hpp>

using namespace Qt::StringLiterals;

namespace
{

/// A JPEG file of the values, which are in `colors`; without a profile that says so.
QByteArray plainJpeg(const QImage& shown, const QColorSpace& colors)
{
    QImage image = shown.convertedToColorSpace(colors);
    image.setColorSpace(QColorSpace());
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(image.save(&buffer, "JPG", 98));
    return bytes;
}

/// The preview of a DNG file that was taken with the camera set to Adobe RGB.
std::optional<QImage> previewOfAdobeRgb(const QByteArray& jpeg)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"IMG_1.dng"_s);
    const Bitmap light = ImageBuilder::scene({240, 180}, Transfer::Linear);
    ImageBuilder::write(path, ImageBuilder::dng(light, {.crop = {}, .preview = jpeg}));
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    image->exifData()["Exif.Photo.ColorSpace"] = uint16_t{0xFFFF};
    image->exifData()["Exif.Iop.InteroperabilityIndex"] = "R03";
    image->writeMetadata();
    const Result<SourceFile> file = SourceFile::read(path);
    EXPECT_TRUE(file.ok());
    const auto preview = file.ok() ? file.value().preview() : std::nullopt;
    return preview ? std::optional(preview->image) : std::nullopt;
}

QImage scene()
{
    QImage image = BitmapImage::toImage(ImageBuilder::scene({160, 120}));
    image.setColorSpace(QColorSpace::SRgb);
    return image;
}

double differenceFromScene(const std::optional<QImage>& preview)
{
    return preview ? ImageBuilder::difference(BitmapImage::fromImage(*preview),
                                              BitmapImage::fromImage(scene()))
                   : 1.0;
}

} // namespace

TEST(SourceFileTest, aPreviewThatSaysNothingIsInTheColoursThatTheCameraWasSetTo)
{
    EXPECT_LT(differenceFromScene(previewOfAdobeRgb(plainJpeg(scene(), QColorSpace::AdobeRgb))),
              0.01);
    // Taken as they are, the values are too pale.
    EXPECT_GT(differenceFromScene(previewOfAdobeRgb(plainJpeg(scene(), QColorSpace::SRgb))), 0.01);
}

TEST(SourceFileTest, aPreviewThatTellsOfItsColoursIsTakenAtItsWord)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    ASSERT_TRUE(scene().save(&buffer, "JPG", 98)); // with its profile
    EXPECT_LT(differenceFromScene(previewOfAdobeRgb(bytes)), 0.01);
}

TEST(SourceFileTest, neitherAPipeNorAFolderIsRead)
{
    const QTemporaryDir folder;
    const QString pipe = folder.filePath(u"IMG_1.dng"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& path : {pipe, folder.path()}) {
        const Result<SourceFile> file = SourceFile::read(path);
        ASSERT_FALSE(file.ok()) << path.toStdString();
        EXPECT_EQ(file.error().code, ErrorCode::Unreadable);
        EXPECT_EQ(file.error().message,
                  u"The file \"%1\" cannot be used: it is no plain file."_s.arg(path));
    }
}
