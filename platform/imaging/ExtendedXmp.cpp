#include "ExtendedXmp.h"

#include "ImagePropertiesContent.h"
#include "JpegSegment.h"
#include "JpegSegments.h"
#include "XmpEffort.h"
#include "XmpRepair.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <algorithm>
#include <functional>
#include <set>
#include <string>

namespace
{

constexpr const char* kNoteSpace = "http://ns.adobe.com/xmp/note/";
constexpr const char* kNoteName = "HasExtendedXMP";

/// Name, digest of the whole (32 digits), its length and where the piece belongs (32 bits each).
constexpr QByteArrayView kSignature("http://ns.adobe.com/xmp/extension/\0", 35);
constexpr qsizetype kDigestLength = 32;
constexpr qsizetype kHeadLength = kSignature.size() + kDigestLength + 8;

/// 32 digits, in capitals.
QByteArray digestOf(QByteArrayView packet)
{
    return QCryptographicHash::hash(packet, QCryptographicHash::Md5).toHex().toUpper();
}

/// What follows name and digest of the segments that hold pieces.
QList<QByteArrayView> piecesIn(QByteArrayView jpeg, QByteArrayView digest)
{
    QList<QByteArrayView> pieces;
    for (const QByteArrayView payload :
         JpegSegments::payloads(jpeg, JpegSegment::kApp1, kSignature)) {
        if (payload.size() > kHeadLength &&
            payload.sliced(kSignature.size(), kDigestLength) == digest) {
            pieces.append(payload.sliced(kSignature.size() + kDigestLength));
        }
    }
    return pieces;
}

/// The packet that the pieces make; empty where they do not make the one that was noted.
QByteArray assembled(QByteArrayView jpeg, const QByteArray& digest)
{
    const QList<QByteArrayView> pieces = piecesIn(jpeg, digest);
    if (pieces.isEmpty()) {
        return {};
    }
    const qsizetype length = qFromBigEndian<quint32>(pieces.first().data());
    if (length > std::min(XmpEffort::kLargestPacket, jpeg.size())) {
        return {};
    }
    QByteArray packet(length, '\0');
    for (const QByteArrayView piece : pieces) {
        const QByteArrayView bytes = piece.sliced(8);
        const qsizetype place = qFromBigEndian<quint32>(piece.data() + 4);
        if (place > length || bytes.size() > length - place) {
            return {};
        }
        std::copy(bytes.begin(), bytes.end(), packet.begin() + place);
    }
    // The digest also tells whether a piece is missing.
    return digestOf(packet) == digest.toUpper() ? packet : QByteArray();
}

bool isNote(const Exiv2::Xmpdatum& datum)
{
    return datum.tagName() == kNoteName &&
           Exiv2::XmpProperties::ns(datum.groupName()) == kNoteSpace;
}

bool decodePacket(const QByteArray& packet, Exiv2::XmpData& xmp)
{
    return !packet.isEmpty() && Exiv2::XmpParser::decode(xmp, packet.toStdString()) == 0;
}

QByteArray bigEndian(qsizetype number)
{
    QByteArray bytes(sizeof(quint32), '\0');
    qToBigEndian(static_cast<quint32>(number), bytes.data());
    return bytes;
}

} // namespace

bool ExtendedXmp::isNoted(const ImageProperties::Content& content)
{
    return std::any_of(content.xmp.begin(), content.xmp.end(), isNote);
}

void ExtendedXmp::merge(QByteArrayView jpeg, ImageProperties::Content& content)
{
    Exiv2::XmpData& xmp = content.xmp;
    const auto note = std::find_if(xmp.begin(), xmp.end(), isNote);
    if (note == xmp.end()) {
        return;
    }
    const QByteArray packet = assembled(jpeg, QByteArray::fromStdString(note->toString()));
    Exiv2::XmpData rest;
    if (!XmpEffort::isBearable(packet) ||
        (!decodePacket(packet, rest) &&
         !decodePacket(XmpRepair::withoutDuplicates(packet), rest))) {
        content.isExtendedXmpLost = true;
        return;
    }
    std::set<std::string, std::less<>> known;
    for (const Exiv2::Xmpdatum& datum : xmp) {
        known.emplace(MetadataData::propertyOf(datum.key()));
    }
    for (const Exiv2::Xmpdatum& datum : rest) {
        if (!known.contains(MetadataData::propertyOf(datum.key()))) {
            xmp.add(datum);
        }
    }
}

void ExtendedXmp::note(Exiv2::XmpData& main, QByteArrayView packet)
{
    if (Exiv2::XmpProperties::prefix(kNoteSpace).empty()) {
        Exiv2::XmpProperties::registerNs(kNoteSpace, "xmpNote");
    }
    const Exiv2::XmpKey key(Exiv2::XmpProperties::prefix(kNoteSpace), kNoteName);
    main[key.key()] = digestOf(packet).toStdString();
}

QList<JpegSegment> ExtendedXmp::segments(const QByteArray& packet)
{
    constexpr qsizetype kLargestPiece = JpegSegment::kLargestPayload - kHeadLength;
    const QByteArray head = kSignature.toByteArray() + digestOf(packet) + bigEndian(packet.size());
    QList<JpegSegment> segments;
    for (qsizetype place = 0; place < packet.size(); place += kLargestPiece) {
        segments.append(
            {JpegSegment::kApp1, head + bigEndian(place) + packet.mid(place, kLargestPiece)});
    }
    return segments;
}
