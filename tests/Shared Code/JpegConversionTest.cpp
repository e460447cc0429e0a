#include "JpegConversion.h"

#include "FakeDelegate.h"
#include "FakePhotoApplication.h"
#include "LogRecorder.h"
#include "QtPrinters.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <exiv2/exiv2.hpp>
#include <functional>

using namespace Qt::StringLiterals;

namespace
{

class JpegConversionTest : public testing::Test
{
protected:
    JpegConversionTest()
    {
        QImage picture(96, 64, QImage::Format_RGB32);
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                picture.setPixel(x, y, qRgb(2 * x, 3 * y, 255 - 2 * x));
            }
        }
        EXPECT_TRUE(picture.save(m_source, nullptr, 95));
        m_library.addPhotoFile(m_source, 96, 64);
    }

    /// Changes the source's metadata.
    void edit(const std::function<void(Exiv2::Image&)>& change) const
    {
        const auto image = Exiv2::ImageFactory::open(m_source.toStdString());
        image->readMetadata();
        change(*image);
        image->writeMetadata();
    }

    [[nodiscard]] Result<ProvedJpeg> convert()
    {
        const PhotoPtr photo = m_library.photoHandle(1);
        return JpegConversion::convert(m_source, *photo, m_delegate);
    }

    /// Gives the source an Exif block that is none.
    void damageExif() const
    {
        QFile file(m_source);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        const QByteArray bytes = file.readAll();
        const QByteArray segment = QByteArrayLiteral("\xFF\xE1\0\x10"
                                                     "Exif\0\0damaged!");
        ASSERT_TRUE(file.seek(0));
        file.write(bytes.first(2) + segment + bytes.sliced(2));
    }

    /// Converts and opens the result.
    [[nodiscard]] std::unique_ptr<Exiv2::Image> converted()
    {
        const Result<ProvedJpeg> jpeg = convert();
        if (!jpeg.ok()) {
            ADD_FAILURE() << jpeg.error().message.toStdString();
            return nullptr;
        }
        const QByteArray& bytes = jpeg.value().bytes;
        auto image = Exiv2::ImageFactory::open(
            reinterpret_cast<const Exiv2::byte*>(bytes.constData()), bytes.size());
        image->readMetadata();
        return std::unique_ptr<Exiv2::Image>(image.release());
    }

    [[nodiscard]] static double degrees(Exiv2::Image& image, const char* key)
    {
        const Exiv2::Exifdatum& value = image.exifData()[key];
        return value.toFloat(0) + value.toFloat(1) / 60.0 + value.toFloat(2) / 3600.0;
    }

    QTemporaryDir m_folder;
    QString m_source{m_folder.filePath(u"IMG_1.jpg"_s)};
    LogRecorder m_log;
    FakePhotoApplication m_library;
    FakeDelegate m_delegate;
};

TEST_F(JpegConversionTest, anUnscaledPictureKeepsItsSize)
{
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_TRUE(jpeg.ok()) << jpeg.error().message.toStdString();
    EXPECT_EQ(jpeg.value().picture.size(), QSize(96, 64));
    EXPECT_EQ(QImage::fromData(jpeg.value().bytes, "JPEG").size(), QSize(96, 64));
    EXPECT_TRUE(m_log.entries().isEmpty());
}

TEST_F(JpegConversionTest, aScaledPictureHasTheTargetSize)
{
    m_delegate.scale = 0.5F;
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_TRUE(jpeg.ok()) << jpeg.error().message.toStdString();
    EXPECT_EQ(jpeg.value().picture.size(), QSize(48, 32));
    EXPECT_EQ(QImage::fromData(jpeg.value().bytes, "JPEG").size(), QSize(48, 32));
}

TEST_F(JpegConversionTest, aSizeThatLeavesNoPixelsIsAFailure)
{
    m_delegate.scale = 0.0F;
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_FALSE(jpeg.ok());
    EXPECT_EQ(jpeg.error().message, u"The output size leaves no pixels of "_s + m_source);
    EXPECT_TRUE(m_log.entries().isEmpty());
}

TEST_F(JpegConversionTest, aSizeBeyondAJpegIsAFailureThatSaysSo)
{
    m_delegate.scale = 400.0F;
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_FALSE(jpeg.ok());
    EXPECT_EQ(jpeg.error().message,
              u"The output size of %1 is larger than this program writes"_s.arg(m_source));
}

TEST_F(JpegConversionTest, memoryThatIsTooShortFailsThePhotoAlone)
{
    m_library.whenCalled(u"photo 1.latitude"_s, [] { throw std::bad_alloc(); });
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_FALSE(jpeg.ok());
    EXPECT_EQ(jpeg.error().code, ErrorCode::OutOfSpace);
    EXPECT_EQ(
        jpeg.error().message,
        u"There is not enough memory to convert %1. Close other programs, and scan again"_s.arg(
            m_source));
}

TEST_F(JpegConversionTest, theControllersQualityDecidesTheSize)
{
    m_delegate.quality = 0.1;
    const qsizetype coarse = convert().value().bytes.size();
    m_delegate.quality = 1.0;
    EXPECT_GT(convert().value().bytes.size(), coarse);
}

TEST_F(JpegConversionTest, aPictureWithoutAPositionGetsTheLibrarysWithReferences)
{
    m_library.photo(1).latitude = -33.9;
    m_library.photo(1).longitude = 151.2;
    const auto image = converted();
    ASSERT_NE(image, nullptr);
    EXPECT_NEAR(degrees(*image, "Exif.GPSInfo.GPSLatitude"), 33.9, 1e-4);
    EXPECT_EQ(image->exifData()["Exif.GPSInfo.GPSLatitudeRef"].toString(), "S");
    EXPECT_NEAR(degrees(*image, "Exif.GPSInfo.GPSLongitude"), 151.2, 1e-4);
    EXPECT_EQ(image->exifData()["Exif.GPSInfo.GPSLongitudeRef"].toString(), "E");
    EXPECT_EQ(m_library.calls(), (QStringList{u"photo 1.latitude"_s, u"photo 1.longitude"_s}));
}

TEST_F(JpegConversionTest, aLibraryWithoutAPositionGivesZeroNorthAndEast)
{
    const auto image = converted();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(degrees(*image, "Exif.GPSInfo.GPSLatitude"), 0.0);
    EXPECT_EQ(image->exifData()["Exif.GPSInfo.GPSLatitudeRef"].toString(), "N");
    EXPECT_EQ(image->exifData()["Exif.GPSInfo.GPSLongitudeRef"].toString(), "E");
}

TEST_F(JpegConversionTest, noPositionDoesNotTakeThePlaceOfOneThatCannotBeRead)
{
    damageExif();
    const auto image = converted();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->exifData().findKey(Exiv2::ExifKey("Exif.GPSInfo.GPSLatitude")),
              image->exifData().end());
    EXPECT_EQ(m_log.entries(),
              QStringList{u"The metadata of %1 is damaged; what cannot be read is left out"_s.arg(
                  m_source)});
}

TEST_F(JpegConversionTest, aPositionThatTheLibraryKnowsIsWrittenForOneThatCannotBeRead)
{
    damageExif();
    m_library.photo(1).latitude = -33.9;
    const auto image = converted();
    ASSERT_NE(image, nullptr);
    EXPECT_NEAR(degrees(*image, "Exif.GPSInfo.GPSLatitude"), 33.9, 1e-4);
}

TEST_F(JpegConversionTest, aPictureWithAPositionKeepsItAndNobodyIsAsked)
{
    edit([](Exiv2::Image& image) {
        image.exifData()["Exif.GPSInfo.GPSLatitudeRef"] = "N";
        image.exifData()["Exif.GPSInfo.GPSLatitude"] = "48/1 30/1 0/1";
        image.exifData()["Exif.GPSInfo.GPSMapDatum"] = "WGS-84";
    });
    m_library.photo(1).latitude = -33.9;
    const auto image = converted();
    ASSERT_NE(image, nullptr);
    EXPECT_NEAR(degrees(*image, "Exif.GPSInfo.GPSLatitude"), 48.5, 1e-9);
    EXPECT_EQ(image->exifData()["Exif.GPSInfo.GPSLatitudeRef"].toString(), "N");
    EXPECT_EQ(image->exifData()["Exif.GPSInfo.GPSMapDatum"].toString(), "WGS-84");
    EXPECT_TRUE(m_library.calls().isEmpty());
}

TEST_F(JpegConversionTest, aPositionInXmpAloneStaysWithoutAnotherBesideIt)
{
    edit([](Exiv2::Image& image) {
        image.xmpData()["Xmp.exif.GPSLatitude"] = "48,30.0N";
        image.xmpData()["Xmp.exif.GPSLongitude"] = "2,0.0E";
    });
    const auto image = converted();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->exifData().findKey(Exiv2::ExifKey("Exif.GPSInfo.GPSLatitude")),
              image->exifData().end());
    EXPECT_EQ(image->xmpData()["Xmp.exif.GPSLatitude"].toString(), "48,30.0N");
    EXPECT_TRUE(m_library.calls().isEmpty());
}

TEST_F(JpegConversionTest, aPositionBlockWithoutAPositionStaysAsItIs)
{
    edit([](Exiv2::Image& image) { image.exifData()["Exif.GPSInfo.GPSDateStamp"] = "2014:05:06"; });
    const auto image = converted();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->exifData()["Exif.GPSInfo.GPSDateStamp"].toString(), "2014:05:06");
    EXPECT_EQ(image->exifData().findKey(Exiv2::ExifKey("Exif.GPSInfo.GPSLatitude")),
              image->exifData().end());
    EXPECT_TRUE(m_library.calls().isEmpty());
}

TEST_F(JpegConversionTest, keywordsNeverReachTheJpegWhileOtherTextsDo)
{
    edit([](Exiv2::Image& image) {
        image.iptcData()["Iptc.Application2.Keywords"] = "Sea";
        image.iptcData()["Iptc.Application2.Caption"] = "A caption";
        image.xmpData()["Xmp.dc.subject"] = "Sea";
        image.exifData()["Exif.Image.XPKeywords"] = "83 0 101 0 97 0 0 0";
        image.exifData()["Exif.Image.Artist"] = "Somebody";
    });
    const auto image = converted();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->iptcData().findKey(Exiv2::IptcKey("Iptc.Application2.Keywords")),
              image->iptcData().end());
    EXPECT_EQ(image->xmpData().findKey(Exiv2::XmpKey("Xmp.dc.subject")), image->xmpData().end());
    EXPECT_EQ(image->exifData().findKey(Exiv2::ExifKey("Exif.Image.XPKeywords")),
              image->exifData().end());
    EXPECT_EQ(image->iptcData()["Iptc.Application2.Caption"].toString(), "A caption");
    EXPECT_EQ(image->exifData()["Exif.Image.Artist"].toString(), "Somebody");
}

TEST_F(JpegConversionTest, aFileOfAnotherPhotoIsAFailure)
{
    m_library.photo(1).evidence.files = QStringList{m_folder.filePath(u"IMG_2.jpg"_s)};
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_FALSE(jpeg.ok());
    EXPECT_EQ(jpeg.error().message, m_source + u" is no file of this photo"_s);
    EXPECT_TRUE(m_library.calls().isEmpty());
}

TEST_F(JpegConversionTest, aLinkToAFileOfThePhotoIsThatFile)
{
    const QString link = m_folder.filePath(u"link.jpg"_s);
    ASSERT_TRUE(QFile::link(m_source, link));
    m_library.photo(1).evidence.files = QStringList{link};
    EXPECT_TRUE(convert().ok());
}

TEST_F(JpegConversionTest, aFileThatIsCutShortIsAFailureThatNamesIt)
{
    QFile file(m_source);
    ASSERT_TRUE(file.resize(file.size() / 2));
    const Result<ProvedJpeg> jpeg = convert();
    ASSERT_FALSE(jpeg.ok());
    EXPECT_TRUE(jpeg.error().message.contains(u"IMG_1.jpg"_s));
}

TEST_F(JpegConversionTest, convertingWritesNothing)
{
    QFile file(m_source);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    ASSERT_TRUE(convert().ok());
    ASSERT_TRUE(file.seek(0));
    EXPECT_EQ(file.readAll(), before);
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files), QStringList{u"IMG_1.jpg"_s});
}

TEST(GpsPositionTest, signsBecomeReferences)
{
    EXPECT_EQ(JpegConversion::gpsPosition(-33.9, 151.2),
              (GpsPosition{33.9, u"S"_s, 151.2, u"E"_s}));
    EXPECT_EQ(JpegConversion::gpsPosition(33.9, -0.1), (GpsPosition{33.9, u"N"_s, 0.1, u"W"_s}));
    EXPECT_EQ(JpegConversion::gpsPosition(0.0, 0.0), (GpsPosition{0.0, u"N"_s, 0.0, u"E"_s}));
}

} // namespace
