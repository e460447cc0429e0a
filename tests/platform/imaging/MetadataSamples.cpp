#include "MetadataSamples.h"

#include "Bitmap.h"
#include "ImagePropertiesContent.h"
#include "JpegDestination.h"
#include "MetadataSegments.h"

#include <gtest/gtest.h>

#include <exiv2/image.hpp>

namespace
{

constexpr const char* kNone = "(none)";

QByteArray plainJpeg()
{
    const Result<QByteArray> jpeg =
        JpegDestination::encodePlain(Bitmap(16, 8, Transfer::Srgb), 0.8);
    EXPECT_TRUE(jpeg.ok());
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

QByteArray written(Exiv2::Image& image, const MetadataSamples::Blocks& blocks)
{
    image.setExifData(blocks.exif);
    image.setIptcData(blocks.iptc);
    image.setXmpData(blocks.xmp);
    image.writeMetadata();
    Exiv2::BasicIo& io = image.io();
    io.open();
    const Exiv2::DataBuf bytes = io.read(static_cast<long>(io.size()));
    return {reinterpret_cast<const char*>(bytes.pData_), bytes.size_};
}

} // namespace

namespace MetadataSamples
{

QByteArray jpegWith(const Blocks& blocks)
{
    const QByteArray plain = plainJpeg();
    const auto image = Exiv2::ImageFactory::open(
        reinterpret_cast<const Exiv2::byte*>(plain.constData()), static_cast<long>(plain.size()));
    return written(*image, blocks);
}

ImageProperties holding(const Blocks& blocks)
{
    ImageProperties properties;
    // The content is open to writers of blocks only; the tests stand in for its reader here.
    auto& content = const_cast<ImageProperties::Content&>(properties.content());
    content.exif = blocks.exif;
    content.iptc = blocks.iptc;
    content.xmp = blocks.xmp;
    return properties;
}

Exiv2::XmpData largeXmp()
{
    constexpr int kTexts = 400;
    constexpr int kEvents = 300;
    Exiv2::XmpData xmp;
    for (int index = 0; index < kTexts; ++index) {
        const std::string letters(static_cast<size_t>(2 * index),
                                  static_cast<char>('a' + index % 26));
        xmp["Xmp.photoshop.Property" + std::to_string(index)] = "text " + letters + " <&> \xc3\xa9";
    }
    Exiv2::XmpTextValue events;
    events.setXmpArrayType(Exiv2::XmpValue::xaSeq);
    xmp.add(Exiv2::XmpKey("Xmp.xmpMM.History"), &events);
    for (int index = 1; index <= kEvents; ++index) {
        const std::string event = "Xmp.xmpMM.History[" + std::to_string(index) + "]";
        xmp[event + "/stEvt:action"] = "saved " + std::to_string(index);
        xmp[event + "/stEvt:softwareAgent"] = std::string("an editor of pictures");
    }
    xmp["Xmp.iptcExt.PersonInImage"] = std::string("Ann");
    xmp["Xmp.iptcExt.PersonInImage"] = std::string("Ben");
    xmp["Xmp.dc.title"] = std::string("lang=x-default A title");
    xmp["Xmp.dc.title"] = std::string("lang=de-DE Ein Titel");
    return xmp;
}

QByteArray jpegWithExifBytes(const QByteArray& exif)
{
    return jpegWithSegments({{0xe1, QByteArrayLiteral("Exif\0\0") + exif}});
}

QByteArray jpegWithSegments(const QList<JpegSegment>& segments)
{
    const QByteArray plain = plainJpeg();
    QByteArray jpeg = plain.left(2);
    for (const JpegSegment& segment : segments) {
        const qsizetype length = segment.payload.size() + 2;
        jpeg.append('\xff').append(static_cast<char>(segment.marker));
        jpeg.append(static_cast<char>(length >> 8)).append(static_cast<char>(length & 0xff));
        jpeg.append(segment.payload);
    }
    return jpeg + plain.mid(2);
}

ImageProperties readBack(const QByteArray& bytes)
{
    const Result<ImageProperties> properties = ImageProperties::fromBytes(bytes);
    EXPECT_TRUE(properties.ok());
    return properties.ok() ? properties.value() : ImageProperties();
}

ImageProperties
asCarried(const ImageProperties& properties, QSize pixels, const QByteArray& thumbnail)
{
    return readBack(jpegWithSegments(MetadataSegments::build(properties, pixels, thumbnail)));
}

bool hasExif(const ImageProperties& properties, const char* key)
{
    const Exiv2::ExifData& exif = properties.content().exif;
    return exif.findKey(Exiv2::ExifKey(key)) != exif.end();
}

std::string exifText(const ImageProperties& properties, const char* key)
{
    const Exiv2::ExifData& exif = properties.content().exif;
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? kNone : found->toString();
}

std::string xmpText(const ImageProperties& properties, const char* key)
{
    // Compared as text: a key can only be made of a prefix that Exiv2 has met already.
    for (const Exiv2::Xmpdatum& datum : properties.content().xmp) {
        if (datum.key() == key) {
            return datum.toString();
        }
    }
    return kNone;
}

std::map<std::string, std::string> xmpTexts(const ImageProperties& properties)
{
    std::map<std::string, std::string> texts;
    for (const Exiv2::Xmpdatum& datum : properties.content().xmp) {
        if (datum.tagName() != "HasExtendedXMP") {
            texts.emplace(datum.key(), datum.toString());
        }
    }
    return texts;
}

int iptcCount(const ImageProperties& properties, const char* key)
{
    int count = 0;
    for (const Exiv2::Iptcdatum& datum : properties.content().iptc) {
        count += datum.key() == key ? 1 : 0;
    }
    return count;
}

} // namespace MetadataSamples
