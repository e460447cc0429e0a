#include "ImageProperties.h"

#include "ImagePropertiesContent.h"
#include "MetadataAdapter.h"
#include "MetadataSamples.h"
#include "MetadataSegments.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace MetadataSamples;

namespace
{

constexpr double kTolerance = 1e-8;

/// A block of one entry: the pointer to a GPS directory of no entries.
QByteArray exifWithEmptyGps()
{
    return QByteArrayLiteral("II\x2a\0\x08\0\0\0"
                             "\x01\0"
                             "\x25\x88\x04\0\x01\0\0\0\x1a\0\0\0"
                             "\0\0\0\0"
                             "\0\0"
                             "\0\0\0\0");
}

Blocks everything()
{
    Blocks blocks;
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    blocks.exif["Exif.Photo.DateTimeOriginal"] = std::string("2019:05:04 03:02:01");
    blocks.iptc["Iptc.Application2.ObjectName"] = std::string("A title");
    blocks.iptc["Iptc.Application2.Keywords"] = std::string("first");
    blocks.iptc.add(Exiv2::IptcKey("Iptc.Application2.Keywords"),
                    Exiv2::StringValue("second").clone().get());
    blocks.xmp["Xmp.dc.subject"] = std::string("first");
    blocks.xmp["Xmp.lr.hierarchicalSubject"] = std::string("all|first");
    blocks.xmp["Xmp.digiKam.TagsList"] = std::string("all/first");
    blocks.xmp["Xmp.MicrosoftPhoto.LastKeywordXMP"] = std::string("first");
    blocks.xmp["Xmp.photoshop.SupplementalCategories"] = std::string("sport");
    blocks.xmp["Xmp.xmp.Rating"] = std::string("4");
    return blocks;
}

} // namespace

TEST(ImageProperties, aPictureWithoutMetadataHasNone)
{
    const ImageProperties properties = readBack(jpegWithSegments({}));
    EXPECT_FALSE(properties.hasGps());
    EXPECT_FALSE(properties.hasIptc());
    EXPECT_FALSE(properties.facts().dateTaken.has_value());
    EXPECT_EQ(properties.facts().pixels, QSize(16, 8));
}

TEST(ImageProperties, aMissingFileIsNotFound)
{
    const Result<ImageProperties> read = ImageProperties::read(u"/nowhere/at/all.jpg"_s);
    ASSERT_FALSE(read.ok());
    EXPECT_EQ(read.error().code, ErrorCode::NotFound);
    EXPECT_TRUE(read.error().message.contains(u"/nowhere/at/all.jpg"_s));
}

TEST(ImageProperties, whatIsNoPictureIsUnsupported)
{
    const Result<ImageProperties> text = ImageProperties::fromBytes("Only some words.");
    ASSERT_FALSE(text.ok());
    EXPECT_EQ(text.error().code, ErrorCode::Unsupported);
    const Result<ImageProperties> nothing = ImageProperties::fromBytes({});
    ASSERT_FALSE(nothing.ok());
    EXPECT_EQ(nothing.error().code, ErrorCode::Unsupported);
}

TEST(ImageProperties, metadataWithoutAPictureAreUnsupported)
{
    const QByteArray xml = "<?xml version=\"1.0\"?>\n<plist><dict/></plist>\n";
    const QByteArray xmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"></x:xmpmeta>\n";
    const QTemporaryDir folder;
    for (const QByteArray& bytes : {xml, xmp}) {
        const Result<ImageProperties> fromBytes = ImageProperties::fromBytes(bytes);
        ASSERT_FALSE(fromBytes.ok());
        EXPECT_EQ(fromBytes.error().code, ErrorCode::Unsupported);
        QFile file(folder.filePath(u"catalogue.xml"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        const Result<ImageProperties> read = ImageProperties::read(file.fileName());
        ASSERT_FALSE(read.ok());
        EXPECT_EQ(read.error().code, ErrorCode::Unsupported);
    }
}

TEST(ImageProperties, aFileInTheCurrentFolderNamedLikeStandardInputIsReadAsAFile)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QFile file(folder.filePath(u"-"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(jpegWith(everything()));
    file.close();
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    const Result<ImageProperties> read = ImageProperties::read(u"-"_s);
    ASSERT_TRUE(QDir::setCurrent(before));
    ASSERT_TRUE(read.ok());
    EXPECT_EQ(exifText(read.value(), "Exif.Image.Make"), "Maker");
}

TEST(ImageProperties, memoryThatIsTooShortIsNoMissingMetadata)
{
    const auto fail = [] { throw std::bad_alloc(); };
    EXPECT_THROW(static_cast<void>(MetadataAdapter::attempt(fail)), std::bad_alloc);
}

TEST(ImageProperties, aSouthernAndEasternPositionIsWrittenUnsignedWithItsReferences)
{
    ImageProperties properties;
    properties.setGps({33.9, u"S"_s, 151.2, u"E"_s});
    const ImageProperties carried = asCarried(properties, {16, 8});
    EXPECT_EQ(exifText(carried, "Exif.GPSInfo.GPSLatitudeRef"), "S");
    EXPECT_EQ(exifText(carried, "Exif.GPSInfo.GPSLongitudeRef"), "E");
    EXPECT_EQ(exifText(carried, "Exif.GPSInfo.GPSLatitude"), "33/1 54/1 0/10000000");
    EXPECT_EQ(exifText(carried, "Exif.GPSInfo.GPSLongitude"), "151/1 12/1 0/10000000");
    EXPECT_NEAR(carried.facts().latitude.value_or(0.0), -33.9, kTolerance);
    EXPECT_NEAR(carried.facts().longitude.value_or(0.0), 151.2, kTolerance);
}

TEST(ImageProperties, aPositionKeepsAHundredMillionthOfADegree)
{
    for (const double degrees : {0.0, 1e-8, 12.345678912345, 59.999999999, 89.99999999, 90.0}) {
        ImageProperties properties;
        properties.setGps({degrees, u"N"_s, degrees * 2.0, u"W"_s});
        const ImageFacts facts = asCarried(properties, {16, 8}).facts();
        EXPECT_NEAR(facts.latitude.value_or(-1.0), degrees, kTolerance);
        EXPECT_NEAR(facts.longitude.value_or(1.0), -degrees * 2.0, kTolerance);
    }
}

TEST(ImageProperties, aGpsBlockWithoutAPositionCountsAsPresent)
{
    const ImageProperties properties = readBack(jpegWithExifBytes(exifWithEmptyGps()));
    EXPECT_TRUE(properties.hasGps());
    EXPECT_FALSE(properties.facts().latitude.has_value());
    EXPECT_TRUE(asCarried(properties, {16, 8}).hasGps());
}

TEST(ImageProperties, aPositionInXmpAloneCountsAsPresentAndStaysAsItIs)
{
    Blocks blocks;
    blocks.xmp["Xmp.exif.GPSLatitude"] = std::string("48,30.0N");
    blocks.xmp["Xmp.exif.GPSLongitude"] = std::string("2,0.0E");
    const ImageProperties properties = readBack(jpegWith(blocks));
    EXPECT_TRUE(properties.hasGps());
    const ImageProperties carried = asCarried(properties, {16, 8});
    EXPECT_EQ(xmpText(carried, "Xmp.exif.GPSLatitude"), "48,30.0N");
    EXPECT_EQ(xmpText(carried, "Xmp.exif.GPSLongitude"), "2,0.0E");
    EXPECT_FALSE(hasExif(carried, "Exif.GPSInfo.GPSLatitude"));
}

TEST(ImageProperties, aNewPositionReplacesTheWholeGpsBlock)
{
    Blocks blocks;
    blocks.exif["Exif.GPSInfo.GPSAltitude"] = Exiv2::URational(1200, 10);
    blocks.exif["Exif.GPSInfo.GPSDateStamp"] = std::string("2019:05:04");
    ImageProperties properties = readBack(jpegWith(blocks));
    ASSERT_TRUE(properties.hasGps());
    properties.setGps({1.0, u"N"_s, 2.0, u"E"_s});
    EXPECT_FALSE(hasExif(properties, "Exif.GPSInfo.GPSAltitude"));
    EXPECT_FALSE(hasExif(properties, "Exif.GPSInfo.GPSDateStamp"));
    EXPECT_EQ(exifText(properties, "Exif.GPSInfo.GPSVersionID"), "2 3 0 0");
}

TEST(ImageProperties, aPositionThatIsNoNumberIsNotWritten)
{
    ImageProperties properties;
    properties.setGps({std::numeric_limits<double>::quiet_NaN(), u"N"_s, 0.0, u"E"_s});
    EXPECT_FALSE(properties.hasGps());
}

TEST(ImageProperties, onlyTheKeywordsLeaveTheIptcBlock)
{
    ImageProperties properties = readBack(jpegWith(everything()));
    ASSERT_TRUE(properties.hasIptc());
    ASSERT_EQ(iptcCount(properties, "Iptc.Application2.Keywords"), 2);
    properties.removeIptcKeywords();
    const ImageProperties carried = asCarried(properties, {16, 8});
    EXPECT_EQ(iptcCount(carried, "Iptc.Application2.Keywords"), 0);
    EXPECT_EQ(iptcCount(carried, "Iptc.Application2.ObjectName"), 1);
    EXPECT_TRUE(carried.hasIptc());
}

TEST(ImageProperties, theKeywordsOfWindowsLeaveExif)
{
    Blocks blocks;
    blocks.exif["Exif.Image.XPKeywords"].setValue("83 0 101 0 97 0 0 0");
    blocks.exif["Exif.Image.XPTitle"].setValue("83 0 101 0 97 0 0 0");
    ImageProperties properties = readBack(jpegWith(blocks));
    ASSERT_TRUE(hasExif(properties, "Exif.Image.XPKeywords"));
    properties.removeExifKeywords();
    const ImageProperties carried = asCarried(properties, {16, 8});
    EXPECT_FALSE(hasExif(carried, "Exif.Image.XPKeywords"));
    EXPECT_TRUE(hasExif(carried, "Exif.Image.XPTitle"));
}

TEST(ImageProperties, onlyTheSubjectKeywordsLeaveXmp)
{
    ImageProperties properties = readBack(jpegWith(everything()));
    ASSERT_EQ(properties.content().xmp.count(), 6);
    properties.removeXmpSubjects();
    EXPECT_EQ(properties.content().xmp.count(), 2);
    EXPECT_EQ(xmpText(properties, "Xmp.xmp.Rating"), "4");
    // IPTC has them too, where they stay.
    EXPECT_EQ(xmpText(properties, "Xmp.photoshop.SupplementalCategories"), "sport");
}

TEST(ImageProperties, aCopyIsIndependentOfItsOrigin)
{
    ImageProperties origin = readBack(jpegWith(everything()));
    const ImageProperties copy = origin;
    origin.removeIptcKeywords();
    origin.setGps({1.0, u"N"_s, 2.0, u"E"_s});
    EXPECT_EQ(iptcCount(copy, "Iptc.Application2.Keywords"), 2);
    EXPECT_FALSE(copy.hasGps());
    const ImageProperties moved = std::move(origin);
    EXPECT_TRUE(moved.hasGps());
}

TEST(ImageProperties, severalThreadsReadAndWriteAtOnce)
{
    const QByteArray jpeg = jpegWith(everything());
    std::vector<int> good(4, 0);
    std::vector<std::thread> threads;
    threads.reserve(good.size());
    for (int& count : good) {
        threads.emplace_back([&count, &jpeg] {
            for (int turn = 0; turn < 25; ++turn) {
                const ImageProperties carried = asCarried(readBack(jpeg), {16, 8});
                count += xmpText(carried, "Xmp.xmp.Rating") == "4" ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(good, std::vector<int>(4, 25));
}

TEST(ImageProperties, aFileCutOffAnywhereIsReadAsFarAsItGoesOrRefused)
{
    const QByteArray jpeg = jpegWith(everything());
    int withMaker = 0;
    for (qsizetype length = 0; length < jpeg.size(); length += 7) {
        const Result<ImageProperties> read = ImageProperties::fromBytes(jpeg.left(length));
        if (read.ok()) {
            withMaker += read.value().facts().texts.value(u"Make"_s) == u"Maker"_s ? 1 : 0;
            EXPECT_LE(MetadataSegments::build(read.value(), {16, 8}, {}).size(), 3);
        }
    }
    EXPECT_GT(withMaker, 0);
}

TEST(ImageProperties, aFileWithAnyByteWrongIsReadOrRefused)
{
    const QByteArray jpeg = jpegWith(everything());
    int readable = 0;
    for (qsizetype place = 0; place < std::min<qsizetype>(jpeg.size(), 1500); place += 3) {
        QByteArray damaged = jpeg;
        damaged[place] = static_cast<char>(damaged[place] ^ 0xff);
        const Result<ImageProperties> read = ImageProperties::fromBytes(damaged);
        if (read.ok()) {
            ++readable;
            static_cast<void>(read.value().facts());
            for (const JpegSegment& segment : MetadataSegments::build(read.value(), {16, 8}, {})) {
                EXPECT_LE(segment.payload.size(), 65533);
            }
        }
    }
    EXPECT_GT(readable, 0);
}
