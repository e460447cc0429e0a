#include "Bitmap.h"
#include "ImageProperties.h"
#include "JpegDestination.h"
#include "MetadataSamples.h"

#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace MetadataSamples;

namespace
{

QDateTime utc(const QString& text)
{
    QDateTime date = QDateTime::fromString(text, Qt::ISODateWithMs);
    date.setTimeSpec(Qt::UTC);
    return date;
}

ImageFacts factsOf(const Blocks& blocks)
{
    return readBack(jpegWith(blocks)).facts();
}

} // namespace

TEST(ImageFacts, theDateIsTheWallClockOfTheShotWithItsFraction)
{
    Blocks blocks;
    blocks.exif["Exif.Image.DateTime"] = std::string("2020:01:01 00:00:00");
    EXPECT_EQ(factsOf(blocks).dateTaken, utc(u"2020-01-01T00:00:00.000"_s));
    blocks.exif["Exif.Photo.DateTimeDigitized"] = std::string("2018:02:03 04:05:06");
    EXPECT_EQ(factsOf(blocks).dateTaken, utc(u"2018-02-03T04:05:06.000"_s));
    blocks.exif["Exif.Photo.DateTimeOriginal"] = std::string("2017:12:31 23:59:58");
    blocks.exif["Exif.Photo.SubSecTimeOriginal"] = std::string("07");
    EXPECT_EQ(factsOf(blocks).dateTaken, utc(u"2017-12-31T23:59:58.070"_s));
}

TEST(ImageFacts, aDateThatIsNoneIsAbsent)
{
    Blocks blocks;
    blocks.exif["Exif.Photo.DateTimeOriginal"] = std::string("0000:00:00 00:00:00");
    EXPECT_FALSE(factsOf(blocks).dateTaken.has_value());
}

TEST(ImageFacts, southWestAndBelowTheSeaAreNegative)
{
    Blocks blocks;
    blocks.exif["Exif.GPSInfo.GPSLatitudeRef"] = std::string("S");
    blocks.exif["Exif.GPSInfo.GPSLatitude"].setValue("34/1 30/1 0/1");
    blocks.exif["Exif.GPSInfo.GPSLongitudeRef"] = std::string("W");
    blocks.exif["Exif.GPSInfo.GPSLongitude"].setValue("58/1 0/1 3600/100");
    blocks.exif["Exif.GPSInfo.GPSAltitudeRef"].setValue("1");
    blocks.exif["Exif.GPSInfo.GPSAltitude"] = Exiv2::URational(125, 10);
    const ImageFacts facts = factsOf(blocks);
    EXPECT_DOUBLE_EQ(facts.latitude.value_or(0.0), -34.5);
    EXPECT_DOUBLE_EQ(facts.longitude.value_or(0.0), -58.01);
    EXPECT_DOUBLE_EQ(facts.altitude.value_or(0.0), -12.5);
}

TEST(ImageFacts, aPositionOffTheEarthIsAbsent)
{
    Blocks blocks;
    blocks.exif["Exif.GPSInfo.GPSLatitudeRef"] = std::string("N");
    blocks.exif["Exif.GPSInfo.GPSLatitude"].setValue("134/1 0/1 0/1");
    blocks.exif["Exif.GPSInfo.GPSLongitudeRef"] = std::string("E");
    blocks.exif["Exif.GPSInfo.GPSLongitude"].setValue("10/1 0/1 0/1");
    const ImageFacts facts = factsOf(blocks);
    EXPECT_FALSE(facts.latitude.has_value());
    EXPECT_FALSE(facts.longitude.has_value());
}

TEST(ImageFacts, aPositionIsAlsoReadFromXmpWhereExifHasNone)
{
    Blocks blocks;
    blocks.xmp["Xmp.exif.GPSLatitude"] = std::string("34,30.0S");
    blocks.xmp["Xmp.exif.GPSLongitude"] = std::string("58,0,36W");
    EXPECT_DOUBLE_EQ(factsOf(blocks).latitude.value_or(0.0), -34.5);
    EXPECT_DOUBLE_EQ(factsOf(blocks).longitude.value_or(0.0), -58.01);
    blocks.exif["Exif.GPSInfo.GPSLatitudeRef"] = std::string("N");
    blocks.exif["Exif.GPSInfo.GPSLatitude"].setValue("48/1 30/1 0/1");
    blocks.exif["Exif.GPSInfo.GPSLongitudeRef"] = std::string("E");
    blocks.exif["Exif.GPSInfo.GPSLongitude"].setValue("2/1 0/1 0/1");
    EXPECT_DOUBLE_EQ(factsOf(blocks).latitude.value_or(0.0), 48.5);
}

TEST(ImageFacts, aPositionInXmpThatIsNoneIsAbsent)
{
    for (const char* const text : {"34,30.0", "134,30.0S", "S", "34;30S", "34,30.0E", ""}) {
        Blocks blocks;
        blocks.xmp["Xmp.exif.GPSLatitude"] = std::string(text);
        blocks.xmp["Xmp.exif.GPSLongitude"] = std::string("58,0,36W");
        EXPECT_FALSE(factsOf(blocks).latitude.has_value()) << text;
    }
}

TEST(ImageFacts, textsComeFromTheBlockThatCountsFirst)
{
    Blocks blocks;
    blocks.exif["Exif.Image.ImageDescription"] = std::string("described in Exif  ");
    EXPECT_EQ(factsOf(blocks).caption, u"described in Exif"_s);
    blocks.xmp["Xmp.dc.description"] = std::string("lang=x-default described in XMP");
    blocks.iptc["Iptc.Application2.ObjectName"] = std::string("titled in IPTC");
    blocks.iptc["Iptc.Application2.Keywords"] = std::string("IPTC keyword");
    EXPECT_EQ(factsOf(blocks).caption, u"described in XMP"_s);
    EXPECT_EQ(factsOf(blocks).title, u"titled in IPTC"_s);
    EXPECT_EQ(factsOf(blocks).keywords, QStringList{u"IPTC keyword"_s});
    blocks.iptc["Iptc.Application2.Caption"] = std::string("described in IPTC");
    blocks.xmp["Xmp.dc.title"] = std::string("lang=x-default titled in XMP");
    blocks.xmp["Xmp.dc.subject"] = std::string("one");
    blocks.xmp["Xmp.dc.subject"] = std::string("two");
    EXPECT_EQ(factsOf(blocks).caption, u"described in IPTC"_s);
    EXPECT_EQ(factsOf(blocks).title, u"titled in XMP"_s);
    EXPECT_EQ(factsOf(blocks).keywords, (QStringList{u"one"_s, u"two"_s}));
}

TEST(ImageFacts, namesAreReadAsUtf8OrElseAsLatin1)
{
    Blocks blocks;
    blocks.exif["Exif.Image.Artist"] = std::string("J\xc3\xbcrgen");
    blocks.exif["Exif.Image.Copyright"] = std::string("J\xfcrgen");
    const ImageFacts facts = factsOf(blocks);
    EXPECT_EQ(facts.texts.value(u"Artist"_s), u"Jürgen"_s);
    EXPECT_EQ(facts.texts.value(u"Copyright"_s), u"Jürgen"_s);
}

TEST(ImageFacts, versionsAreWrittenWithPoints)
{
    Blocks blocks;
    blocks.exif["Exif.Photo.ExifVersion"].setValue("48 50 51 49");
    blocks.exif["Exif.Photo.FlashpixVersion"].setValue("48 49 48 48");
    blocks.exif["Exif.GPSInfo.GPSVersionID"].setValue("2 3 0 0");
    const ImageFacts facts = factsOf(blocks);
    EXPECT_EQ(facts.texts.value(u"ExifVersion"_s), u"2.3.1"_s);
    EXPECT_EQ(facts.texts.value(u"FlashPixVersion"_s), u"1.0"_s);
    EXPECT_EQ(facts.texts.value(u"GPSVersion"_s), u"2.3.0.0"_s);
}

TEST(ImageFacts, exposureIsInSecondsAndFNumbers)
{
    Blocks apex;
    apex.exif["Exif.Photo.ShutterSpeedValue"] = Exiv2::Rational(6, 1);
    apex.exif["Exif.Photo.ApertureValue"] = Exiv2::URational(4, 1);
    const ImageFacts fromApex = factsOf(apex);
    EXPECT_DOUBLE_EQ(fromApex.numbers.value(u"ShutterSpeed"_s), 1.0 / 64.0);
    EXPECT_DOUBLE_EQ(fromApex.numbers.value(u"ApertureValue"_s), 4.0);
    apex.exif["Exif.Photo.ExposureTime"] = Exiv2::URational(1, 60);
    apex.exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10);
    const ImageFacts exact = factsOf(apex);
    EXPECT_DOUBLE_EQ(exact.numbers.value(u"ShutterSpeed"_s), 1.0 / 60.0);
    EXPECT_DOUBLE_EQ(exact.numbers.value(u"ApertureValue"_s), 2.8);
}

TEST(ImageFacts, aSensitivityBeyondItsFieldIsReadWhereItStands)
{
    Blocks blocks;
    blocks.exif["Exif.Photo.ISOSpeedRatings"] = uint16_t{65535};
    blocks.exif["Exif.Photo.RecommendedExposureIndex"] = uint32_t{102400};
    EXPECT_DOUBLE_EQ(factsOf(blocks).numbers.value(u"ISOSpeedRating"_s), 102400.0);
}

TEST(ImageFacts, aFractionOfZeroPartsIsAbsent)
{
    Blocks blocks;
    blocks.exif["Exif.Photo.FocalLength"] = Exiv2::URational(50, 0);
    blocks.exif["Exif.Photo.ExposureBiasValue"] = Exiv2::Rational(-1, 0);
    const ImageFacts facts = factsOf(blocks);
    EXPECT_FALSE(facts.numbers.contains(u"FocalLength"_s));
    EXPECT_FALSE(facts.numbers.contains(u"ExposureBiasValue"_s));
}

TEST(ImageFacts, lensAndModesHaveTheirNames)
{
    Blocks blocks;
    blocks.exif["Exif.Photo.LensSpecification"].setValue("24/1 105/1 4/1 4/1");
    blocks.exif["Exif.Photo.LensModel"] = std::string("24-105mm");
    blocks.exif["Exif.Photo.BodySerialNumber"] = std::string("00042");
    blocks.exif["Exif.Photo.MeteringMode"] = uint16_t{5};
    blocks.exif["Exif.Photo.FocalLengthIn35mmFilm"] = uint16_t{38};
    blocks.exif["Exif.Image.Orientation"] = uint16_t{8};
    const ImageFacts facts = factsOf(blocks);
    EXPECT_DOUBLE_EQ(facts.numbers.value(u"LensMinMM"_s), 24.0);
    EXPECT_DOUBLE_EQ(facts.numbers.value(u"LensMaxMM"_s), 105.0);
    EXPECT_DOUBLE_EQ(facts.numbers.value(u"MeteringMode"_s), 5.0);
    EXPECT_DOUBLE_EQ(facts.numbers.value(u"FocalLenIn35mmFilm"_s), 38.0);
    EXPECT_EQ(facts.texts.value(u"LensModel"_s), u"24-105mm"_s);
    EXPECT_EQ(facts.texts.value(u"CameraSerialNumber"_s), u"00042"_s);
    EXPECT_EQ(facts.orientation, 8);
}

TEST(ImageFacts, anOrientationThatIsNoneIsUpright)
{
    Blocks blocks;
    blocks.exif["Exif.Image.Orientation"] = uint16_t{9};
    EXPECT_EQ(factsOf(blocks).orientation, 1);
}

TEST(ImageFacts, theEmbeddedProfileHasAName)
{
    const Result<QByteArray> jpeg =
        JpegDestination::encode(Bitmap(16, 8, Transfer::Srgb), ImageProperties(), 0.8);
    ASSERT_TRUE(jpeg.ok());
    EXPECT_TRUE(readBack(jpeg.value()).facts().colorProfileName.contains(u"sRGB"_s));
    EXPECT_TRUE(factsOf({}).colorProfileName.isEmpty());
}

TEST(ImageFacts, filesOfCamerasSayWhoMadeThemAndWhen)
{
    struct Expected {
        QString file;
        QString model;
        QSize pixels;
        int orientation;
        QString date;
    };

    const QList<Expected> files{
        {u"masters/DSC03584.dng"_s, u"ILCE-7M3"_s, {5472, 3648}, 1, u"2020-04-12T10:30:23"_s},
        {u"masters/IMG_1997.cr2"_s,
         u"Canon PowerShot S90"_s,
         {3648, 2736},
         6,
         u"2020-04-16T10:42:58"_s},
        {u"raw/panasonic_lx3.rw2"_s, u"DMC-LX3"_s, {3724, 2754}, 1, u"2008-08-06T15:21:56"_s},
        {u"raw/gopro_hero7_gps.dng"_s, u"HERO7 Black"_s, {4000, 3000}, 2, u"2018-09-26T08:25:27"_s},
        {u"raw/canon_d30.crw"_s, u"Canon EOS D30"_s, {2160, 1440}, 1, u"2018-01-01T13:03:32"_s},
        {u"other/immich_IMG_2682.heic"_s,
         u"iPhone 7"_s,
         {4032, 3024},
         1,
         u"2019-03-21T11:04:22.348"_s},
    };
    for (const Expected& expected : files) {
        const QString path = QStringLiteral(CORVANE_SHARED_DATA "/") + expected.file;
        if (!QFileInfo::exists(path)) {
            continue;
        }
        const Result<ImageProperties> read = ImageProperties::read(path);
        ASSERT_TRUE(read.ok()) << path.toStdString();
        const ImageFacts facts = read.value().facts();
        EXPECT_EQ(facts.texts.value(u"Model"_s), expected.model);
        EXPECT_EQ(facts.pixels, expected.pixels) << path.toStdString();
        EXPECT_EQ(facts.orientation, expected.orientation) << path.toStdString();
        EXPECT_EQ(facts.dateTaken, utc(expected.date)) << path.toStdString();
    }
}
