#include "JpegDestination.h"

#include "ExiftoolReader.h"
#include "LogRecorder.h"
#include "MetadataSamples.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kCopySize(64, 48);
constexpr int kOrientations = 8;
constexpr long kMoreThanASegment = 70000;

/// Copies of a small picture with given metadata, and what exiftool reads of them.
class Copies final
{
public:
    void add(const ImageProperties& properties)
    {
        const Bitmap bitmap(kCopySize.width(), kCopySize.height(), Transfer::Srgb);
        const auto jpeg = JpegDestination::encode(bitmap, properties, 0.8);
        ASSERT_TRUE(jpeg.ok());
        m_paths.append(m_folder.filePath(u"%1.jpg"_s.arg(m_paths.size())));
        QFile file(m_paths.last());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(jpeg.value()), jpeg.value().size());
    }

    [[nodiscard]] QList<ExiftoolReader::Tags> tags() const { return ExiftoolReader::tags(m_paths); }

private:
    QTemporaryDir m_folder;
    QStringList m_paths;
};

ExiftoolReader::Tags copied(const ImageProperties& properties)
{
    Copies copies;
    copies.add(properties);
    const auto tags = copies.tags();
    return tags.isEmpty() ? ExiftoolReader::Tags() : tags.first();
}

MetadataSamples::Blocks cameraBlocks()
{
    MetadataSamples::Blocks blocks;
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    blocks.exif["Exif.Image.Orientation"] = uint16_t{6};
    blocks.exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10);
    blocks.exif["Exif.Photo.ColorSpace"] = uint16_t{0xffff};
    blocks.exif["Exif.Photo.PixelXDimension"] = uint32_t{4000};
    blocks.exif["Exif.Photo.PixelYDimension"] = uint32_t{3000};
    blocks.exif["Exif.GPSInfo.GPSLatitudeRef"] = std::string("S");
    blocks.exif["Exif.GPSInfo.GPSLatitude"] = std::string("33/1 54/1 0/1");
    blocks.iptc["Iptc.Application2.Headline"] = std::string("a headline");
    blocks.iptc["Iptc.Application2.City"] = std::string("a city");
    blocks.xmp["Xmp.dc.title"] = std::string("a title");
    blocks.xmp["Xmp.xmp.Rating"] = std::string("4");
    return blocks;
}

void expectSoundJpeg(const ExiftoolReader::Tags& tags)
{
    EXPECT_EQ(tags.value(u"ExifTool"_s, u"Error"_s), std::nullopt);
    EXPECT_EQ(tags.value(u"ExifTool"_s, u"Warning"_s), std::nullopt);
    EXPECT_EQ(tags.value(u"File"_s, u"FileType"_s), u"JPEG"_s);
    EXPECT_EQ(tags.value(u"File"_s, u"ImageWidth"_s), QString::number(kCopySize.width()));
    EXPECT_EQ(tags.value(u"File"_s, u"ImageHeight"_s), QString::number(kCopySize.height()));
}

} // namespace

TEST(JpegDestination, anotherReaderFindsTheSizeAndColoursThatTheCopyHas)
{
    const ExiftoolReader::Tags tags = copied(MetadataSamples::holding(cameraBlocks()));
    expectSoundJpeg(tags);
    EXPECT_EQ(tags.value(u"EXIF"_s, u"ExifImageWidth"_s), QString::number(kCopySize.width()));
    EXPECT_EQ(tags.value(u"EXIF"_s, u"ExifImageHeight"_s), QString::number(kCopySize.height()));
    EXPECT_EQ(tags.value(u"EXIF"_s, u"ColorSpace"_s), u"1"_s);
    const auto profile = tags.value(u"ICC_Profile"_s, u"ProfileDescription"_s);
    ASSERT_TRUE(profile);
    EXPECT_TRUE(profile->startsWith(u"sRGB"_s)) << qPrintable(*profile);
}

TEST(JpegDestination, anotherReaderFindsWhatTheBlocksOfTheOriginalSay)
{
    const ExiftoolReader::Tags tags = copied(MetadataSamples::holding(cameraBlocks()));
    EXPECT_EQ(tags.value(u"EXIF"_s, u"Make"_s), u"Maker"_s);
    EXPECT_EQ(tags.value(u"EXIF"_s, u"FNumber"_s), u"2.8"_s);
    EXPECT_EQ(tags.value(u"EXIF"_s, u"GPSLatitude"_s), u"33.9"_s);
    EXPECT_EQ(tags.value(u"EXIF"_s, u"GPSLatitudeRef"_s), u"S"_s);
    EXPECT_EQ(tags.value(u"IPTC"_s, u"Headline"_s), u"a headline"_s);
    EXPECT_EQ(tags.value(u"IPTC"_s, u"City"_s), u"a city"_s);
    EXPECT_EQ(tags.value(u"XMP"_s, u"Title"_s), u"a title"_s);
    EXPECT_EQ(tags.value(u"XMP"_s, u"Rating"_s), u"4"_s);
}

TEST(JpegDestination, pixelsAndOrientationStayAsTheOriginalHasThem)
{
    Copies copies;
    for (int orientation = 1; orientation <= kOrientations; ++orientation) {
        MetadataSamples::Blocks blocks;
        blocks.exif["Exif.Image.Orientation"] = static_cast<uint16_t>(orientation);
        copies.add(MetadataSamples::holding(blocks));
    }
    const auto tags = copies.tags();
    ASSERT_EQ(tags.size(), kOrientations);
    for (int orientation = 1; orientation <= kOrientations; ++orientation) {
        const ExiftoolReader::Tags& copy = tags.at(orientation - 1);
        expectSoundJpeg(copy);
        EXPECT_EQ(copy.value(u"EXIF"_s, u"Orientation"_s), QString::number(orientation));
    }
}

TEST(JpegDestination, metadataLargerThanASegmentLeaveASoundJpegAndAreNamed)
{
    MetadataSamples::Blocks blocks = cameraBlocks();
    const std::vector<Exiv2::byte> bytes(kMoreThanASegment, 7);
    Exiv2::DataValue note(bytes.data(), kMoreThanASegment, Exiv2::littleEndian, Exiv2::undefined);
    blocks.exif.add(Exiv2::ExifKey("Exif.Photo.MakerNote"), &note);
    const LogRecorder log;
    const ExiftoolReader::Tags tags = copied(MetadataSamples::holding(blocks));
    expectSoundJpeg(tags);
    EXPECT_EQ(tags.value(u"EXIF"_s, u"FNumber"_s), u"2.8"_s);
    EXPECT_TRUE(log.entries().join(u'\n').contains(u"the maker note"_s));
}

TEST(JpegDestination, anotherReaderFindsAllOfXmpThatIsLargerThanASegment)
{
    MetadataSamples::Blocks blocks;
    blocks.xmp = MetadataSamples::largeXmp();
    const ExiftoolReader::Tags tags = copied(MetadataSamples::holding(blocks));
    expectSoundJpeg(tags);
    int texts = 0;
    for (const Exiv2::Xmpdatum& datum : blocks.xmp) {
        const QString name = QString::fromStdString(datum.tagName());
        if (name.startsWith(u"Property"_s)) {
            ++texts;
            EXPECT_EQ(tags.value(u"XMP"_s, name),
                      QString::fromStdString(datum.toString()).simplified());
        }
    }
    EXPECT_EQ(texts, 400);
    EXPECT_EQ(tags.value(u"XMP"_s, u"HistoryAction"_s).value_or(QString()).count(u"saved"_s), 300);
    EXPECT_EQ(tags.value(u"XMP"_s, u"PersonInImage"_s), uR"([["Ann","Ben"]])"_s);
    EXPECT_EQ(tags.value(u"XMP"_s, u"Title"_s), u"A title"_s);
    EXPECT_EQ(tags.value(u"XMP"_s, u"Title-de-DE"_s), u"Ein Titel"_s);
}
