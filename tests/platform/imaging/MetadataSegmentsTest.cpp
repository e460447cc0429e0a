#include "MetadataSegments.h"

#include "ImageBuilder.h"
#include "ImagePropertiesContent.h"
#include "LogRecorder.h"
#include "MetadataPruning.h"
#include "MetadataSamples.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>

using namespace Qt::StringLiterals;
using namespace MetadataSamples;

namespace
{

const QSize kCopy(1000, 500);

/// What every copy of a photo must say as its original does.
constexpr std::array kShotTags{"Exif.Image.Make",
                               "Exif.Image.Model",
                               "Exif.Image.Software",
                               "Exif.Image.Orientation",
                               "Exif.Photo.DateTimeOriginal",
                               "Exif.Photo.ExposureTime",
                               "Exif.Photo.FNumber",
                               "Exif.Photo.ISOSpeedRatings",
                               "Exif.Photo.FocalLength",
                               "Exif.Photo.LensModel",
                               "Exif.GPSInfo.GPSLatitude",
                               "Exif.GPSInfo.GPSLatitudeRef",
                               "Exif.GPSInfo.GPSAltitude"};

constexpr std::array kStructureTags{
    "Exif.Image.NewSubfileType",  "Exif.Image.ImageWidth",
    "Exif.Image.ImageLength",     "Exif.Image.BitsPerSample",
    "Exif.Image.Compression",     "Exif.Image.PhotometricInterpretation",
    "Exif.Image.StripOffsets",    "Exif.Image.StripByteCounts",
    "Exif.Image.SamplesPerPixel", "Exif.Image.PlanarConfiguration",
    "Exif.Image.TileOffsets",     "Exif.Image.SubIFDs",
    "Exif.Image.XMLPacket",       "Exif.Image.IPTCNAA",
    "Exif.Image.ImageResources",  "Exif.Image.InterColorProfile",
    "Exif.Image.CFAPattern",      "Exif.Image.DNGVersion",
    "Exif.Image.ColorMatrix1",    "Exif.Image.DNGPrivateData"};

/// What a DNG file says of itself and of the shot, without its picture.
ImageProperties rawPhoto()
{
    ImageProperties properties;
    properties.setGps({33.9, u"S"_s, 151.2, u"E"_s});
    Blocks blocks;
    blocks.exif = properties.content().exif;
    Exiv2::ExifData& exif = blocks.exif;
    for (const char* const key : kStructureTags) {
        exif[key].setValue("7");
    }
    exif["Exif.Image.DNGPrivateData"].setValue(std::string("1 2 3 4 5 6 7 8"));
    exif["Exif.Image.Make"] = std::string("Maker");
    exif["Exif.Image.Model"] = std::string("Model 5");
    exif["Exif.Image.Software"] = std::string("Ver.1.0");
    exif["Exif.Image.Orientation"] = uint16_t{6};
    exif["Exif.Image.ExposureTime"] = Exiv2::URational(1, 125);
    exif["Exif.Image.LensInfo"].setValue("24/1 105/1 4/1 4/1");
    exif["Exif.Photo.FNumber"] = Exiv2::URational(56, 10);
    exif["Exif.Photo.ColorSpace"] = uint16_t{65535};
    exif["Exif.Photo.PixelXDimension"] = uint32_t{4000};
    exif["Exif.Photo.PixelYDimension"] = uint32_t{2000};
    exif["Exif.Photo.FocalPlaneXResolution"] = Exiv2::URational(4438, 1);
    return holding(blocks);
}

QByteArray noise(qsizetype size)
{
    QByteArray bytes;
    quint32 state = 1;
    while (bytes.size() < size) {
        state = state * 1664525U + 1013904223U;
        bytes.append(static_cast<char>(state >> 24));
    }
    return bytes;
}

/// A value whose bytes Exiv2 does not get.
class Refused final : public Exiv2::AsciiValue
{
public:
    Refused()
        : Exiv2::AsciiValue("words")
    {
    }

    long copy(Exiv2::byte* /*into*/, Exiv2::ByteOrder /*order*/) const override
    {
        throw std::runtime_error("refused");
    }

private:
    Refused* clone_() const override { return new Refused(*this); }
};

void setBytes(Exiv2::ExifData& exif, const char* key, qsizetype size)
{
    const QByteArray bytes = noise(size);
    Exiv2::DataValue value(Exiv2::undefined);
    value.read(reinterpret_cast<const Exiv2::byte*>(bytes.constData()),
               static_cast<long>(bytes.size()),
               Exiv2::littleEndian);
    exif[key].setValue(&value);
}

} // namespace

TEST(MetadataSegments, tagsOfTheOriginalsStructureStayBehind)
{
    const ImageProperties original = rawPhoto();
    ASSERT_TRUE(hasExif(original, "Exif.Image.DNGVersion"));
    const ImageProperties carried = asCarried(original, kCopy);
    for (const char* const key : kStructureTags) {
        EXPECT_FALSE(hasExif(carried, key)) << key;
    }
}

TEST(MetadataSegments, whatPointsIntoTheOriginalOrDescribesItsPicturesStaysBehind)
{
    // By number where the name is not the same everywhere.
    constexpr std::array kUntrue{"Exif.Image.0xea1c",
                                 "Exif.Image.JPEGQTables",
                                 "Exif.Photo.0xa500",
                                 "Exif.Photo.0xea1c",
                                 "Exif.Canon.0x00b6",
                                 "Exif.Canon.RawDataOffset",
                                 "Exif.Canon.OriginalDecisionDataOffset",
                                 "Exif.Canon.VRDOffset",
                                 "Exif.Casio2.PreviewImageSize",
                                 "Exif.Casio2.PreviewImageLength",
                                 "Exif.Casio2.PreviewImageStart",
                                 "Exif.Olympus.PreviewImage",
                                 "Exif.Olympus.Thumbnail",
                                 "Exif.Olympus.ThumbnailOffset",
                                 "Exif.Olympus.ThumbnailLength",
                                 "Exif.Olympus2.PreviewImage",
                                 "Exif.Olympus2.Thumbnail",
                                 "Exif.Olympus2.ThumbnailOffset",
                                 "Exif.Olympus2.ThumbnailLength",
                                 "Exif.SonyMinolta.Thumbnail",
                                 "Exif.SonyMinolta.ThumbnailOffset",
                                 "Exif.SonyMinolta.ThumbnailLength",
                                 "Exif.Sony1.PreviewImageSize",
                                 "Exif.Sony2.PreviewImageSize",
                                 "Exif.Samsung2.Preview",
                                 "Exif.SamsungPreview.JPEGInterchangeFormat",
                                 "Exif.Pentax.PreviewImageBorders",
                                 "Exif.PentaxDng.PreviewImageBorders"};
    ImageProperties::Content content;
    for (const char* const key : kUntrue) {
        content.exif[key].setValue("7");
    }
    content.exif["Exif.Canon.OwnerName"] = std::string("Owner");
    MetadataPruning::makeExifTrue(content, kCopy);
    for (const char* const key : kUntrue) {
        EXPECT_EQ(content.exif.findKey(Exiv2::ExifKey(key)), content.exif.end()) << key;
    }
    EXPECT_NE(content.exif.findKey(Exiv2::ExifKey("Exif.Canon.OwnerName")), content.exif.end());
}

TEST(MetadataSegments, tagsAreLookedForByTheNamesThatExiv2Gives)
{
    for (const std::string_view name : MetadataPruning::namedTags()) {
        const std::string key(name);
        EXPECT_EQ(Exiv2::ExifKey(key).key(), key);
    }
}

TEST(MetadataSegments, whatWasPhotographedAndHowStays)
{
    const ImageProperties original = rawPhoto();
    const ImageProperties carried = asCarried(original, kCopy);
    for (const char* const key : kShotTags) {
        if (std::string(key) != "Exif.Photo.ExposureTime") {
            EXPECT_EQ(exifText(carried, key), exifText(original, key)) << key;
        }
    }
    EXPECT_EQ(exifText(carried, "Exif.Image.Orientation"), "6");
}

TEST(MetadataSegments, tagsOfTheFirstDirectoryOfRawFilesMoveToTheirPlaceInAJpeg)
{
    const ImageProperties carried = asCarried(rawPhoto(), kCopy);
    EXPECT_EQ(exifText(carried, "Exif.Photo.ExposureTime"), "1/125");
    EXPECT_FALSE(hasExif(carried, "Exif.Image.ExposureTime"));
    EXPECT_EQ(exifText(carried, "Exif.Photo.LensSpecification"), "24/1 105/1 4/1 4/1");
}

TEST(MetadataSegments, sizeAndColourSpaceAreTheJpegs)
{
    const ImageProperties carried = asCarried(rawPhoto(), kCopy);
    EXPECT_EQ(exifText(carried, "Exif.Photo.PixelXDimension"), "1000");
    EXPECT_EQ(exifText(carried, "Exif.Photo.PixelYDimension"), "500");
    EXPECT_EQ(exifText(carried, "Exif.Photo.ColorSpace"), "1");
}

TEST(MetadataSegments, sensorPixelsPerMillimetreHoldForACopyOfFullSizeOnly)
{
    const ImageProperties original = rawPhoto();
    EXPECT_FALSE(hasExif(asCarried(original, kCopy), "Exif.Photo.FocalPlaneXResolution"));
    EXPECT_TRUE(hasExif(asCarried(original, {3996, 1998}), "Exif.Photo.FocalPlaneXResolution"));
}

TEST(MetadataSegments, placesInPixelsHoldForACopyOfFullSizeOnly)
{
    constexpr std::array kInPixels{"Exif.Photo.SubjectArea",
                                   "Exif.Photo.FocalPlaneXResolution",
                                   "Exif.Image.SubjectLocation",
                                   "Exif.Image.FocalPlaneXResolution",
                                   "Exif.Image.FocalPlaneYResolution",
                                   "Exif.Image.FocalPlaneResolutionUnit"};
    Blocks blocks;
    blocks.exif["Exif.Photo.PixelXDimension"] = uint32_t{4000};
    blocks.exif["Exif.Photo.PixelYDimension"] = uint32_t{2000};
    for (const char* const key : kInPixels) {
        blocks.exif[key].setValue("3");
    }
    blocks.xmp["Xmp.exif.SubjectArea"] = std::string("3");
    const ImageProperties original = holding(blocks);
    const ImageProperties scaled = asCarried(original, kCopy);
    const ImageProperties whole = asCarried(original, {4000, 2000});
    for (const char* const key : kInPixels) {
        EXPECT_FALSE(hasExif(scaled, key)) << key;
        EXPECT_TRUE(hasExif(whole, key)) << key;
    }
    EXPECT_EQ(xmpText(scaled, "Xmp.exif.SubjectArea"), "(none)");
    EXPECT_NE(xmpText(whole, "Xmp.exif.SubjectArea"), "(none)");
}

TEST(MetadataSegments, ofTheStandardsDirectoriesOnlyKnownTagsAreCarried)
{
    constexpr std::array kPrivate{"Exif.Image.0xfde8", "Exif.Image.0x8001", "Exif.Photo.0xfe01"};
    Blocks blocks;
    for (const char* const key : kPrivate) {
        blocks.exif[key] = std::string("private");
    }
    blocks.exif["Exif.Image.Artist"] = std::string("Artist");
    const ImageProperties original = holding(blocks);
    const ImageProperties carried = asCarried(original, kCopy);
    for (const char* const key : kPrivate) {
        ASSERT_TRUE(hasExif(original, key)) << key;
        EXPECT_FALSE(hasExif(carried, key)) << key;
    }
    EXPECT_EQ(exifText(carried, "Exif.Image.Artist"), "Artist");
}

TEST(MetadataSegments, whatTellsOfThePhotoAmongTagsOfRawFilesStays)
{
    constexpr std::array kTrue{"Exif.Image.UniqueCameraModel",
                               "Exif.Image.LocalizedCameraModel",
                               "Exif.Image.OriginalRawFileName",
                               "Exif.Image.0xc6d2",
                               "Exif.Image.CameraLabel"};
    Blocks blocks;
    for (const char* const key : kTrue) {
        blocks.exif[key] = std::string("as it was");
    }
    blocks.exif["Exif.Image.OriginalRawFileData"].setValue("1 2 3");
    const ImageProperties original = holding(blocks);
    const ImageProperties carried = asCarried(original, kCopy);
    for (const char* const key : kTrue) {
        EXPECT_EQ(exifText(carried, key), exifText(original, key)) << key;
    }
    EXPECT_FALSE(hasExif(carried, "Exif.Image.OriginalRawFileData"));
}

TEST(MetadataSegments, theNewThumbnailTakesTheOldOnesPlace)
{
    Blocks blocks;
    Exiv2::ExifThumb(blocks.exif)
        .setJpegThumbnail(reinterpret_cast<const Exiv2::byte*>("old"), 3, {72, 1}, {72, 1}, 2);
    const ImageProperties original = readBack(jpegWith(blocks));
    ASSERT_TRUE(hasExif(original, "Exif.Thumbnail.JPEGInterchangeFormat"));
    const ImageProperties carried = asCarried(original, kCopy, "new one");
    const Exiv2::DataBuf thumbnail = Exiv2::ExifThumbC(carried.content().exif).copy();
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(thumbnail.pData_),
                          static_cast<size_t>(thumbnail.size_)),
              "new one");
    EXPECT_FALSE(hasExif(asCarried(original, kCopy), "Exif.Thumbnail.JPEGInterchangeFormat"));
}

TEST(MetadataSegments, aGpsBlockStaysAsItIs)
{
    Blocks blocks;
    blocks.exif["Exif.GPSInfo.GPSVersionID"].setValue("2 2 0 0");
    blocks.exif["Exif.GPSInfo.GPSImgDirection"] = Exiv2::URational(12345, 100);
    const ImageProperties carried = asCarried(readBack(jpegWith(blocks)), kCopy);
    EXPECT_EQ(exifText(carried, "Exif.GPSInfo.GPSVersionID"), "2 2 0 0");
    EXPECT_EQ(exifText(carried, "Exif.GPSInfo.GPSImgDirection"), "12345/100");
}

TEST(MetadataSegments, developmentSettingsLeaveXmpAndItsSizesBecomeTrue)
{
    Blocks blocks;
    blocks.xmp["Xmp.tiff.ImageWidth"] = std::string("4000");
    blocks.xmp["Xmp.tiff.Orientation"] = std::string("6");
    blocks.xmp["Xmp.exif.PixelXDimension"] = std::string("4000");
    blocks.xmp["Xmp.crs.Exposure2012"] = std::string("+1.00");
    blocks.xmp["Xmp.xmpMM.DocumentID"] = std::string("xmp.did:1");
    blocks.xmp["Xmp.dc.format"] = std::string("image/x-adobe-dng");
    const ImageProperties carried = asCarried(readBack(jpegWith(blocks)), kCopy);
    EXPECT_EQ(xmpText(carried, "Xmp.tiff.ImageWidth"), "(none)");
    EXPECT_EQ(xmpText(carried, "Xmp.tiff.Orientation"), "6");
    EXPECT_EQ(xmpText(carried, "Xmp.exif.PixelXDimension"), "1000");
    EXPECT_EQ(xmpText(carried, "Xmp.crs.Exposure2012"), "(none)");
    EXPECT_EQ(xmpText(carried, "Xmp.xmpMM.DocumentID"), "xmp.did:1");
    EXPECT_EQ(xmpText(carried, "Xmp.dc.format"), "image/jpeg");
}

TEST(MetadataSegments, anIptcBlockLargerThanASegmentGoesOnInTheNext)
{
    Blocks blocks;
    for (int index = 0; index < 50; ++index) {
        blocks.iptc.add(Exiv2::IptcKey("Iptc.Application2.Contact"),
                        Exiv2::StringValue(std::string(2000, 'c')).clone().get());
    }
    const QList<JpegSegment> segments = MetadataSegments::build(holding(blocks), kCopy, {});
    int count = 0;
    for (const JpegSegment& segment : segments) {
        EXPECT_LE(segment.payload.size(), JpegSegment::kLargestPayload);
        count += segment.marker == 0xed ? 1 : 0;
    }
    EXPECT_EQ(count, 2);
    EXPECT_EQ(iptcCount(readBack(jpegWithSegments(segments)), "Iptc.Application2.Contact"), 50);
}

TEST(MetadataSegments, exifThatIsTooLargeLosesTheThumbnailFirstAndTheLogSaysSo)
{
    Blocks blocks;
    setBytes(blocks.exif, "Exif.Photo.UserComment", 40000);
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    const LogRecorder log;
    const ImageProperties carried = asCarried(holding(blocks), kCopy, noise(30000));
    EXPECT_FALSE(hasExif(carried, "Exif.Thumbnail.JPEGInterchangeFormat"));
    EXPECT_TRUE(hasExif(carried, "Exif.Photo.UserComment"));
    ASSERT_EQ(log.entries().size(), 1);
    EXPECT_TRUE(log.entries().first().endsWith(u"left out: the thumbnail"_s));
}

TEST(MetadataSegments, exifThatIsTooLargeLosesTheMakerNoteBeforeOtherTags)
{
    Blocks blocks;
    setBytes(blocks.exif, "Exif.Photo.MakerNote", 50000);
    setBytes(blocks.exif, "Exif.Photo.UserComment", 30000);
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    const LogRecorder log;
    const ImageProperties carried = asCarried(holding(blocks), kCopy);
    EXPECT_FALSE(hasExif(carried, "Exif.Photo.MakerNote"));
    EXPECT_TRUE(hasExif(carried, "Exif.Photo.UserComment"));
    ASSERT_EQ(log.entries().size(), 1);
    EXPECT_TRUE(log.entries().first().endsWith(u"left out: the maker note"_s));
}

TEST(MetadataSegments, ofTagsThatAreTooLargeTheLargestGoesFirst)
{
    Blocks blocks;
    setBytes(blocks.exif, "Exif.Photo.UserComment", 60000);
    setBytes(blocks.exif, "Exif.Photo.DeviceSettingDescription", 10000);
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    const LogRecorder log;
    const ImageProperties carried = asCarried(holding(blocks), kCopy);
    EXPECT_FALSE(hasExif(carried, "Exif.Photo.UserComment"));
    EXPECT_TRUE(hasExif(carried, "Exif.Photo.DeviceSettingDescription"));
    EXPECT_EQ(exifText(carried, "Exif.Image.Make"), "Maker");
    EXPECT_EQ(log.entries().size(), 1);
}

TEST(MetadataSegments, exifThatJustFitsIsWhole)
{
    Blocks blocks;
    setBytes(blocks.exif, "Exif.Photo.UserComment", 64000);
    const LogRecorder log;
    const QList<JpegSegment> segments = MetadataSegments::build(holding(blocks), kCopy, {});
    ASSERT_EQ(segments.size(), 1);
    EXPECT_LE(segments.first().payload.size(), JpegSegment::kLargestPayload);
    EXPECT_TRUE(hasExif(readBack(jpegWithSegments(segments)), "Exif.Photo.UserComment"));
    EXPECT_TRUE(log.entries().isEmpty());
}

TEST(MetadataSegments, aTagThatCannotBeWrittenCostsNoOther)
{
    Blocks blocks;
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    setBytes(blocks.exif, "Exif.Photo.MakerNote", 3000);
    const Refused refused;
    blocks.exif.add(Exiv2::ExifKey("Exif.Photo.UserComment"), &refused);
    const LogRecorder log;
    const ImageProperties carried = asCarried(holding(blocks), kCopy, noise(4000));
    EXPECT_FALSE(hasExif(carried, "Exif.Photo.UserComment"));
    EXPECT_TRUE(hasExif(carried, "Exif.Photo.MakerNote"));
    EXPECT_TRUE(hasExif(carried, "Exif.Thumbnail.JPEGInterchangeFormat"));
    EXPECT_EQ(exifText(carried, "Exif.Image.Make"), "Maker");
    ASSERT_EQ(log.entries().size(), 1);
    EXPECT_TRUE(log.entries().first().contains(u"cannot be written"_s));
    EXPECT_TRUE(log.entries().first().endsWith(u"left out: Exif.Photo.UserComment"_s));
}

TEST(MetadataSegments, aLargeTagThatIsLeftOutSilentlyIsNoReasonToTrim)
{
    Blocks blocks;
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    setBytes(blocks.exif, "Exif.Photo.UserComment", 57500);
    // A maker note of another maker.
    setBytes(blocks.exif, "Exif.Canon.ColorData", 5000);
    const LogRecorder log;
    const ImageProperties carried = asCarried(holding(blocks), kCopy, noise(2000));
    EXPECT_TRUE(hasExif(carried, "Exif.Photo.UserComment"));
    EXPECT_TRUE(hasExif(carried, "Exif.Thumbnail.JPEGInterchangeFormat"));
    ASSERT_EQ(log.entries().size(), 1);
    EXPECT_TRUE(log.entries().first().endsWith(u"left out: Exif.Canon.ColorData"_s));
}

TEST(MetadataSegments, aBlockThatCannotBeWrittenIsNamedInTheLog)
{
    constexpr const char* kSpace = "http://corvane.test/gone/";
    Exiv2::XmpProperties::registerNs(kSpace, "gone");
    Blocks blocks;
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    blocks.xmp["Xmp.gone.Property"] = std::string("text");
    Exiv2::XmpProperties::unregisterNs(kSpace);
    const LogRecorder log;
    const ImageProperties carried = asCarried(holding(blocks), kCopy);
    EXPECT_EQ(exifText(carried, "Exif.Image.Make"), "Maker");
    ASSERT_EQ(log.entries().size(), 1);
    EXPECT_TRUE(
        log.entries().first().startsWith(u"The XMP metadata of the data cannot be written"_s));
}

TEST(MetadataSegments, whatTheLogSaysNamesTheFile)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"IMG_7.jpg"_s);
    Blocks blocks;
    setBytes(blocks.exif, "Exif.Photo.UserComment", 40000);
    ImageBuilder::write(path, jpegWith(blocks));
    const LogRecorder log;
    static_cast<void>(asCarried(ImageProperties::read(path).value(), kCopy, noise(30000)));
    EXPECT_EQ(log.entries(),
              QStringList{u"The Exif metadata of %1 is more than a JPEG file holds; left out: "
                          "the thumbnail"_s.arg(path)});
}

TEST(MetadataSegments, metadataThatAreDamagedAreNamedInTheLog)
{
    const ImageProperties damaged =
        ImageProperties::fromBytes(jpegWithExifBytes("no directory at all")).value();
    const LogRecorder log;
    static_cast<void>(asCarried(damaged, kCopy));
    EXPECT_EQ(
        log.entries(),
        QStringList{u"The metadata of the data is damaged; what cannot be read is left out"_s});
}

TEST(MetadataSegments, xmpLargerThanASegmentIsWholeAndNothingIsLogged)
{
    Blocks blocks;
    blocks.xmp["Xmp.photoshop.History"] = std::string(70000, 'h');
    blocks.xmp["Xmp.xmp.Rating"] = std::string("4");
    const LogRecorder log;
    const ImageProperties carried = asCarried(holding(blocks), kCopy);
    EXPECT_EQ(xmpText(carried, "Xmp.photoshop.History").size(), 70000U);
    EXPECT_EQ(xmpText(carried, "Xmp.xmp.Rating"), "4");
    EXPECT_TRUE(log.entries().isEmpty());
}

TEST(MetadataSegments, segmentsStandInTheOrderOfExifIptcAndXmp)
{
    Blocks blocks;
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    blocks.iptc["Iptc.Application2.ObjectName"] = std::string("A title");
    blocks.xmp["Xmp.xmp.Rating"] = std::string("4");
    const QList<JpegSegment> segments = MetadataSegments::build(holding(blocks), kCopy, {});
    ASSERT_EQ(segments.size(), 3);
    EXPECT_TRUE(segments.at(0).payload.startsWith("Exif"));
    EXPECT_TRUE(segments.at(1).payload.startsWith("Photoshop 3.0"));
    EXPECT_TRUE(segments.at(2).payload.startsWith("http://ns.adobe.com/xap/1.0/"));
}

namespace
{

void expectWhatHoldsCarried(const QString& path)
{
    const Result<ImageProperties> read = ImageProperties::read(path);
    if (!read.ok()) {
        EXPECT_TRUE(path.endsWith(u".xml"_s)) << path.toStdString();
        return;
    }
    const ImageProperties carried = asCarried(read.value(), kCopy, noise(4000));
    for (const char* const key : kShotTags) {
        if (hasExif(read.value(), key)) {
            EXPECT_EQ(exifText(carried, key), exifText(read.value(), key))
                << path.toStdString() << ' ' << key;
        }
    }
    for (const char* const key : kStructureTags) {
        EXPECT_FALSE(hasExif(carried, key)) << path.toStdString() << ' ' << key;
    }
}

} // namespace

TEST(MetadataSegments, theFilesOfCamerasLoseNothingThatHolds)
{
    for (const QString& folder : {u"raw"_s, u"masters"_s, u"other"_s}) {
        QDirIterator files(QStringLiteral(CORVANE_SHARED_DATA "/") + folder, QDir::Files);
        while (files.hasNext()) {
            expectWhatHoldsCarried(files.next());
        }
    }
}
