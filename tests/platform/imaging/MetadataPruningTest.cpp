#include "MetadataPruning.h"

#include "ImagePropertiesContent.h"
#include "MetadataSamples.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <array>
#include <string>

using namespace MetadataSamples;

namespace
{

const QSize kOriginal(4000, 2000);
const QSize kSmall(1000, 500);

/// A picture of 16 x 8 pixels.
ImageProperties withXmp(const QByteArray& spaces, const QByteArray& properties)
{
    return readBack(jpegWithSegments(
        {{0xe1,
          QByteArrayLiteral("http://ns.adobe.com/xap/1.0/\0") +
              R"(<x:xmpmeta xmlns:x="adobe:ns:meta/">)"
              R"(<rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">)"
              R"(<rdf:Description rdf:about="" )" +
              spaces + ">" + properties + "</rdf:Description></rdf:RDF></x:xmpmeta>"}}));
}

void addIptc(Exiv2::IptcData& iptc, uint16_t record, uint16_t tag)
{
    iptc.add(Exiv2::IptcKey(tag, record), Exiv2::StringValue("text").clone().get());
}

} // namespace

TEST(MetadataPruning, sizesOfPanoramasInPixelsHoldForACopyOfFullSizeOnly)
{
    constexpr std::array kInPixels{"Xmp.GPano.CroppedAreaImageWidthPixels",
                                   "Xmp.GPano.CroppedAreaImageHeightPixels",
                                   "Xmp.GPano.CroppedAreaLeftPixels",
                                   "Xmp.GPano.CroppedAreaTopPixels",
                                   "Xmp.GPano.FullPanoWidthPixels",
                                   "Xmp.GPano.FullPanoHeightPixels",
                                   "Xmp.GPano.LargestValidInteriorRectLeft",
                                   "Xmp.GPano.LargestValidInteriorRectTop",
                                   "Xmp.GPano.LargestValidInteriorRectWidth",
                                   "Xmp.GPano.LargestValidInteriorRectHeight"};
    Blocks blocks;
    blocks.exif["Exif.Photo.PixelXDimension"] = static_cast<uint32_t>(kOriginal.width());
    blocks.exif["Exif.Photo.PixelYDimension"] = static_cast<uint32_t>(kOriginal.height());
    for (const char* const key : kInPixels) {
        blocks.xmp[key] = std::string("3");
    }
    blocks.xmp["Xmp.GPano.ProjectionType"] = std::string("equirectangular");
    const ImageProperties scaled = asCarried(holding(blocks), kSmall);
    const ImageProperties whole = asCarried(holding(blocks), kOriginal);
    for (const char* const key : kInPixels) {
        EXPECT_EQ(xmpText(scaled, key), "(none)") << key;
        EXPECT_EQ(xmpText(whole, key), "3") << key;
    }
    EXPECT_EQ(xmpText(scaled, "Xmp.GPano.ProjectionType"), "equirectangular");
}

TEST(MetadataPruning, xmpOfDataThatLieBesideThePacketStaysBehind)
{
    const ImageProperties original =
        withXmp(R"(xmlns:GAudio="http://ns.google.com/photos/1.0/audio/" )"
                R"(xmlns:HDRGainMap="http://ns.apple.com/HDRGainMap/1.0/" )"
                R"(xmlns:apdi="http://ns.apple.com/pixeldatainfo/1.0/" )"
                R"(xmlns:Device="http://ns.google.com/photos/dd/1.0/device/" )"
                R"(xmlns:xmp="http://ns.adobe.com/xap/1.0/")",
                "<Device:Realm>camera</Device:Realm>"
                "<GAudio:Mime>audio/mp4a-latm</GAudio:Mime>"
                "<HDRGainMap:HDRGainMapVersion>65536</HDRGainMap:HDRGainMapVersion>"
                "<apdi:NativeFormat>1278226488</apdi:NativeFormat>"
                "<xmp:Rating>4</xmp:Rating>");
    const ImageProperties carried = asCarried(original, {16, 8});
    for (const char* const key : {"Xmp.Device.Realm",
                                  "Xmp.GAudio.Mime",
                                  "Xmp.HDRGainMap.HDRGainMapVersion",
                                  "Xmp.apdi.NativeFormat"}) {
        EXPECT_NE(xmpText(original, key), "(none)") << key;
        EXPECT_EQ(xmpText(carried, key), "(none)") << key;
    }
    EXPECT_EQ(xmpText(carried, "Xmp.xmp.Rating"), "4");
}

TEST(MetadataPruning, theHistoryOfThePhotoStays)
{
    Blocks blocks;
    blocks.xmp["Xmp.photoshop.DocumentAncestors"] = std::string("some id");
    blocks.xmp["Xmp.photoshop.History"] = std::string("opened, saved");
    blocks.xmp["Xmp.xmpMM.DocumentID"] = std::string("xmp.did:1");
    const ImageProperties carried = asCarried(holding(blocks), kSmall);
    for (const Exiv2::Xmpdatum& datum : blocks.xmp) {
        EXPECT_EQ(xmpText(carried, datum.key().c_str()), datum.toString());
    }
}

TEST(MetadataPruning, picturesAndTheirDataLeaveIptcAndTheRestStays)
{
    constexpr std::array<uint16_t, 4> kPictureRecords{3, 7, 8, 9};
    constexpr std::array<uint16_t, 3> kPreview{200, 201, 202};
    constexpr uint16_t kApplication = 2;
    constexpr uint16_t kPrivateRecord = 240;
    Blocks blocks;
    for (const uint16_t record : kPictureRecords) {
        addIptc(blocks.iptc, record, 10);
    }
    for (const uint16_t tag : kPreview) {
        addIptc(blocks.iptc, kApplication, tag);
    }
    blocks.iptc["Iptc.Envelope.CharacterSet"] = std::string("\x1b%G");
    blocks.iptc["Iptc.Application2.ObjectName"] = std::string("A title");
    blocks.iptc["Iptc.Application2.AudioOutcue"] = std::string("words");
    addIptc(blocks.iptc, kPrivateRecord, 10);
    const ImageProperties carried = asCarried(holding(blocks), kSmall);
    EXPECT_EQ(carried.content().iptc.count(), 4);
    EXPECT_EQ(iptcCount(carried, "Iptc.Envelope.CharacterSet"), 1);
    EXPECT_EQ(iptcCount(carried, "Iptc.Application2.ObjectName"), 1);
    EXPECT_EQ(iptcCount(carried, "Iptc.Application2.AudioOutcue"), 1);
    EXPECT_EQ(iptcCount(carried, "Iptc.0x00f0.0x000a"), 1);
}
