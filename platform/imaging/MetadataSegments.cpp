#include "MetadataSegments.h"

#include "ExifTrimming.h"
#include "ExtendedXmp.h"
#include "ImagePropertiesContent.h"
#include "MetadataAdapter.h"
#include "MetadataPruning.h"
#include "SystemLog.h"
#include "XmpEffort.h"
#include "XmpPackets.h"

#include <algorithm>
#include <exiv2/jpgimage.hpp>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

QByteArray exifSignature()
{
    return QByteArrayLiteral("Exif\0\0");
}

QByteArray xmpSignature()
{
    return QByteArrayLiteral("http://ns.adobe.com/xap/1.0/\0");
}

QByteArray photoshopSignature()
{
    return QByteArrayLiteral("Photoshop 3.0\0");
}

void setThumbnail(Exiv2::ExifData& exif, const QByteArray& jpeg)
{
    Exiv2::ExifThumb thumbnail(exif);
    thumbnail.erase();
    if (!jpeg.isEmpty()) {
        thumbnail.setJpegThumbnail(reinterpret_cast<const Exiv2::byte*>(jpeg.constData()),
                                   static_cast<long>(jpeg.size()),
                                   Exiv2::URational(72, 1),
                                   Exiv2::URational(72, 1),
                                   2);
    }
}

void appendExif(ImageProperties::Content& content,
                QSize pixels,
                const QByteArray& thumbnailJpeg,
                QList<JpegSegment>& segments)
{
    MetadataPruning::makeExifTrue(content, pixels);
    setThumbnail(content.exif, thumbnailJpeg);
    const QByteArray block =
        ExifTrimming::encode(content, JpegSegment::kLargestPayload - exifSignature().size());
    if (!block.isEmpty()) {
        segments.append({JpegSegment::kApp1, exifSignature() + block});
    }
}

/// A block of image resources larger than a segment goes on in the next one (Adobe Photoshop File
/// Formats, "JPEG Files").
void appendIptc(Exiv2::IptcData iptc, QList<JpegSegment>& segments)
{
    MetadataPruning::makeIptcTrue(iptc);
    if (iptc.empty()) {
        return;
    }
    const Exiv2::DataBuf block = Exiv2::Photoshop::setIptcIrb(nullptr, 0, iptc);
    const QByteArray resources(reinterpret_cast<const char*>(block.pData_), block.size_);
    const qsizetype room = JpegSegment::kLargestPayload - photoshopSignature().size();
    for (qsizetype start = 0; start < resources.size(); start += room) {
        segments.append({JpegSegment::kApp13, photoshopSignature() + resources.mid(start, room)});
    }
}

/// XMP Specification Part 3, 1.1.3: two bytes less than there is room for.
constexpr qsizetype kLargestXmp = 65502;

void appendXmp(ImageProperties::Content& content, QSize pixels, QList<JpegSegment>& segments)
{
    if (content.isExtendedXmpLost) {
        systemLog(u"The second part of the XMP metadata of %1 is not whole, or too much to read; "
                  "left out"_s.arg(content.name));
    }
    if (content.isXmpUnread) {
        systemLog(u"The XMP metadata of %1 is too much to read, or several packets; left out"_s.arg(
            content.name));
    }
    MetadataPruning::makeXmpTrue(content, pixels);
    const XmpPackets::Packets packets =
        XmpPackets::encode(std::move(content.xmp),
                           content.name,
                           {.main = kLargestXmp, .extended = XmpEffort::kLargestPacket});
    if (!packets.main.isEmpty()) {
        segments.append({JpegSegment::kApp1, xmpSignature() + packets.main});
    }
    segments.append(ExtendedXmp::segments(packets.extended));
}

/// Each block by itself: one that cannot be written leaves the others.
void appendBlock(const QString& block, const QString& name, const std::function<void()>& append)
{
    if (!MetadataAdapter::attempt(append)) {
        systemLog(
            u"The %1 metadata of %2 cannot be written; all of it is left out"_s.arg(block, name));
    }
}

} // namespace

namespace MetadataSegments
{

QList<JpegSegment>
build(const ImageProperties& properties, QSize pixels, const QByteArray& thumbnailJpeg)
{
    const ImageProperties::Content& content = properties.content();
    if (content.isReadInPart) {
        systemLog(
            u"The metadata of %1 is damaged; what cannot be read is left out"_s.arg(content.name));
    }
    QList<JpegSegment> segments;
    appendBlock(u"Exif"_s, content.name, [&] {
        ImageProperties::Content copy = content;
        appendExif(copy, pixels, thumbnailJpeg, segments);
    });
    appendBlock(u"IPTC"_s, content.name, [&] { appendIptc(content.iptc, segments); });
    appendBlock(u"XMP"_s, content.name, [&] {
        ImageProperties::Content copy = content;
        appendXmp(copy, pixels, segments);
    });
    return segments;
}

} // namespace MetadataSegments
