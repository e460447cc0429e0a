#include "Exiv2Messages.h"
#include "ImageBuilder.h"
#include "ImageProperties.h"
#include "LogRecorder.h"
#include "MetadataSamples.h"
#include "MetadataSegments.h"

#include <QByteArray>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <array>
#include <string>

using namespace MetadataSamples;

namespace
{

constexpr quint16 kExifPointer = 0x8769;
constexpr quint16 kGpsPointer = 0x8825;
constexpr quint16 kByte = 1;
constexpr quint16 kAscii = 2;
constexpr quint16 kLong = 4;
/// Where in tiffOf() the rest stands.
constexpr quint32 kRest = 26;
constexpr quint32 kBeyondTheEnd = 50000;

/// Of a directory, little-endian.
QByteArray entry(quint16 tag, quint16 type, quint32 count, quint32 value)
{
    QByteArray bytes(12, '\0');
    qToLittleEndian(tag, bytes.data());
    qToLittleEndian(type, bytes.data() + 2);
    qToLittleEndian(count, bytes.data() + 4);
    qToLittleEndian(value, bytes.data() + 8);
    return bytes;
}

/// A TIFF structure whose directory has this entry.
QByteArray tiffOf(const QByteArray& entry, const QByteArray& rest = {})
{
    return QByteArrayLiteral("II\x2a\0\x08\0\0\0\x01\0") + entry + QByteArray(4, '\0') + rest;
}

ImageProperties ofExif(const QByteArray& entry, const QByteArray& rest = {})
{
    return readBack(jpegWithExifBytes(tiffOf(entry, rest)));
}

ImageProperties ofTiffWithXmp(const QByteArray& packet)
{
    const auto size = static_cast<quint32>(packet.size());
    return readBack(tiffOf(entry(0x02bc, kByte, size, kRest), packet));
}

/// ISO/IEC 14496-12, 4.2.
QByteArray boxOf(const QByteArray& type, const QByteArray& content)
{
    QByteArray length(4, '\0');
    qToBigEndian(static_cast<quint32>(8 + content.size()), length.data());
    return length + type + content;
}

ImageProperties ofHeifWithXmp(const QByteArray& packet)
{
    // Of XMP.
    const QByteArray identifier = QByteArray::fromHex("be7acfcb97a942e89c71999491e3afac");
    // Exiv2 reads a few bytes more than the box has.
    return readBack(boxOf("ftyp", QByteArrayLiteral("heic\0\0\0\0mif1heic")) +
                    boxOf("uuid", identifier + packet) + boxOf("free", QByteArray(32, '\0')));
}

QByteArray packetOf(const QByteArray& properties)
{
    return R"(<x:xmpmeta xmlns:x="adobe:ns:meta/">
        <rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">
        <rdf:Description rdf:about="" xmlns:photoshop="http://ns.adobe.com/photoshop/1.0/">)" +
           properties + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

/// A structure of so many fields.
QByteArray packetOfFields(int count)
{
    QByteArray fields;
    for (int index = 0; index < count; ++index) {
        const QByteArray name = "photoshop:F" + QByteArray::number(index);
        fields += "<" + name + ">w</" + name + ">";
    }
    return packetOf("<photoshop:City>Adelaide</photoshop:City>"
                    "<photoshop:History rdf:parseType=\"Resource\">" +
                    fields + "</photoshop:History>");
}

QByteArray packetThatStatesTheCityTwice()
{
    return packetOf(
        "<photoshop:City>Adelaide</photoshop:City><photoshop:City>Perth</photoshop:City>"
        "<photoshop:Country>Australia</photoshop:Country>");
}

} // namespace

TEST(DamagedMetadata, metadataThatCanBeReadAreWhole)
{
    Blocks blocks;
    blocks.exif["Exif.Image.Make"] = std::string("Maker");
    blocks.xmp["Xmp.dc.source"] = std::string("text");
    EXPECT_TRUE(readBack(jpegWith(blocks)).isWhole());
}

TEST(DamagedMetadata, aFileThatEndsAmidItsMetadataIsNotWhole)
{
    Blocks blocks;
    blocks.exif["Exif.Image.ImageDescription"] = std::string(3000, 'd');
    EXPECT_FALSE(readBack(jpegWith(blocks).first(1000)).isWhole());
}

TEST(DamagedMetadata, anExifBlockThatIsNoneIsNotWhole)
{
    EXPECT_FALSE(readBack(jpegWithExifBytes("no directory at all")).isWhole());
}

TEST(DamagedMetadata, whatWasLostOfOneFileIsNotLostOfTheNext)
{
    static_cast<void>(readBack(jpegWithExifBytes("no directory at all")));
    EXPECT_TRUE(readBack(jpegWith({})).isWhole());
}

TEST(DamagedMetadata, exifWithADirectoryThatCannotBeReadIsNotWhole)
{
    const QByteArray none(6, '\0');
    const QByteArray tooMany("\xff\xff\0\0\0\0", 6);
    const QByteArray cutOff("\x02\0", 2);
    for (const quint16 pointer : {kExifPointer, kGpsPointer}) {
        EXPECT_TRUE(ofExif(entry(pointer, kLong, 1, kRest), none).isWhole());
        EXPECT_FALSE(ofExif(entry(pointer, kLong, 1, kRest), tooMany).isWhole());
        EXPECT_FALSE(ofExif(entry(pointer, kLong, 1, kRest), cutOff).isWhole());
        EXPECT_FALSE(ofExif(entry(pointer, kLong, 1, kBeyondTheEnd), none).isWhole());
        EXPECT_FALSE(ofExif(entry(pointer, kAscii, 1, kRest), none).isWhole());
    }
}

TEST(DamagedMetadata, exifWithAnEntryThatLiesBeyondTheEndIsNotWhole)
{
    constexpr quint16 kImageDescription = 0x010e;
    EXPECT_TRUE(ofExif(entry(kImageDescription, kAscii, 6, kRest), "a text").isWhole());
    EXPECT_FALSE(ofExif(entry(kImageDescription, kAscii, 6, kBeyondTheEnd), "a text").isWhole());
    EXPECT_FALSE(ofExif(entry(kImageDescription, kAscii, 5000, kRest), "a text").isWhole());
}

TEST(DamagedMetadata, damageOfDirectoriesThatAreNotCarriedDoesNotCount)
{
    EXPECT_FALSE(Exiv2Messages::tellsOfLoss(
        "Offset of directory Canon, entry 0x0001 is out of bounds: Offset = 0x00ffffff; "
        "truncating the entry\n"));
    EXPECT_FALSE(Exiv2Messages::tellsOfLoss(
        "Directory Image2, entry 0x0111 has invalid size 99999999*4; skipping entry.\n"));
    EXPECT_FALSE(Exiv2Messages::tellsOfLoss(
        "Directory Image, entry 0x0111: Strip 0 is outside of the data area; ignored.\n"));
    EXPECT_FALSE(
        Exiv2Messages::tellsOfLoss("Directory Photo has an unexpected next pointer; ignored.\n"));
}

TEST(DamagedMetadata, aPointerToAGpsDirectoryThatCannotBeReadIsNoGpsBlock)
{
    EXPECT_FALSE(ofExif(entry(kGpsPointer, kLong, 1, kBeyondTheEnd)).hasGps());
    EXPECT_TRUE(ofExif(entry(kGpsPointer, kLong, 1, kRest), QByteArray(6, '\0')).hasGps());
}

TEST(DamagedMetadata, aPositionStaysWhereOtherMetadataAreDamaged)
{
    // A GPS directory of two entries, a latitude's reference and one that is missing.
    const QByteArray directory = QByteArrayLiteral("\x02\0") + entry(1, kAscii, 2, 'N');
    const ImageProperties properties = ofExif(entry(kGpsPointer, kLong, 1, kRest), directory);
    EXPECT_FALSE(properties.isWhole());
    EXPECT_TRUE(properties.hasGps());
    EXPECT_EQ(exifText(properties, "Exif.GPSInfo.GPSLatitudeRef"), "N");
}

TEST(DamagedMetadata, xmpThatStatesAPropertyTwiceKeepsTheFirst)
{
    const QByteArray signature = QByteArrayLiteral("http://ns.adobe.com/xap/1.0/\0");
    const ImageProperties ofJpeg =
        readBack(jpegWithSegments({{0xe1, signature + packetThatStatesTheCityTwice()}}));
    for (const ImageProperties& properties :
         {ofJpeg, ofTiffWithXmp(packetThatStatesTheCityTwice())}) {
        EXPECT_EQ(xmpText(properties, "Xmp.photoshop.City"), "Adelaide");
        EXPECT_EQ(xmpText(properties, "Xmp.photoshop.Country"), "Australia");
        EXPECT_TRUE(properties.isWhole());
    }
}

TEST(DamagedMetadata, aTiffFileWhoseXmpIsNoneIsNotWhole)
{
    EXPECT_TRUE(ofTiffWithXmp(packetOf("<photoshop:City>Perth</photoshop:City>")).isWhole());
    EXPECT_FALSE(ofTiffWithXmp(packetOf("<photoshop:City>Perth")).isWhole());
}

TEST(DamagedMetadata, aHeifFileWhoseXmpIsNoneIsNotWhole)
{
    EXPECT_TRUE(ofHeifWithXmp(packetOf("<photoshop:City>Perth</photoshop:City>")).isWhole());
    EXPECT_FALSE(ofHeifWithXmp(packetOf("<photoshop:City>Perth")).isWhole());
}

TEST(DamagedMetadata, xmpThatWouldTakeMinutesToReadIsLeftOut)
{
    constexpr int kFew = 2500;
    constexpr int kMany = 20'000;
    const ImageProperties small = ofTiffWithXmp(packetOfFields(kFew));
    EXPECT_EQ(xmpText(small, "Xmp.photoshop.City"), "Adelaide");
    EXPECT_TRUE(small.isWhole());
    const ImageProperties large = ofTiffWithXmp(packetOfFields(kMany));
    EXPECT_TRUE(xmpTexts(large).empty());
    EXPECT_FALSE(large.isWhole());
    const LogRecorder log;
    static_cast<void>(MetadataSegments::build(large, QSize(4, 4), {}));
    EXPECT_EQ(
        log.entries(),
        QStringList(QStringLiteral(
            "The XMP metadata of the data is too much to read, or several packets; left out")));
}

TEST(DamagedMetadata, xmpThatWouldTakeMinutesIsLeftOutOfADirectoryThatIsCutOffToo)
{
    constexpr quint32 kHeader = 8;
    const QByteArray packet = packetOfFields(20'000);
    const auto size = static_cast<quint32>(packet.size());
    QByteArray offset(4, '\0');
    qToLittleEndian(kHeader + size, offset.data());
    const ImageProperties read =
        readBack(QByteArrayLiteral("II\x2a\0") + offset + packet + QByteArrayLiteral("\x02\0") +
                 entry(0x02bc, kByte, size, kHeader) + QByteArray(6, '\0'));
    EXPECT_TRUE(xmpTexts(read).empty());
}

TEST(DamagedMetadata, xmpThatWouldTakeMinutesIsLeftOutOfFilesAsWell)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.tif"));
    const QByteArray packet = packetOfFields(20'000);
    ImageBuilder::write(
        path, tiffOf(entry(0x02bc, kByte, static_cast<quint32>(packet.size()), kRest), packet));
    const auto properties = ImageProperties::read(path);
    ASSERT_TRUE(properties.ok());
    EXPECT_TRUE(xmpTexts(properties.value()).empty());
    EXPECT_FALSE(properties.value().isWhole());
}

TEST(DamagedMetadata, ofTwoPacketsInADirectoryNoneIsRead)
{
    const QByteArray packet = packetOf("<photoshop:City>Adelaide</photoshop:City>");
    const QByteArray pointer =
        entry(0x02bc, kByte, static_cast<quint32>(packet.size()), kRest + 12);
    const ImageProperties read = readBack(QByteArrayLiteral("II\x2a\0\x08\0\0\0\x02\0") + pointer +
                                          pointer + QByteArray(4, '\0') + packet);
    EXPECT_TRUE(xmpTexts(read).empty());
    EXPECT_FALSE(read.isWhole());
}
