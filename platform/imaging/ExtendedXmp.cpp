#include "ExtendedXmp.h"

#include "ImagePropertiesContent.h"
#include "JpegSegments.h"
#include "XmpRepair.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <algorithm>
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

/// More than any program writes; depth maps and second pictures are a few megabytes.
constexpr qsizetype kLongest = qsizetype{64} * 1024 * 1024;

/// What follows name and digest of the segments that hold pieces.
QList<QByteArrayView> piecesIn(QByteArrayView jpeg, QByteArrayView digest)
{
    constexpr quint8 kApp1 = 0xE1;
    QList<QByteArrayView> pieces;
    for (const QByteArrayView payload : JpegSegments::payloads(jpeg, kApp1, kSignature)) {
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
    if (length > std::min(kLongest, jpeg.size())) {
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
    const QByteArray found = QCryptographicHash::hash(packet, QCryptographicHash::Md5).toHex();
    return found.toUpper() == digest.toUpper() ? packet : QByteArray();
}

bool isNote(const Exiv2::Xmpdatum& datum)
{
    return datum.tagName() == kNoteName &&
           Exiv2::XmpProperties::ns(datum.groupName()) == kNoteSpace;
}

/// "Xmp.xmpMM.History" of "Xmp.xmpMM.History[2]/stEvt:action".
std::string wholeProperty(const std::string& key)
{
    return key.substr(0, key.find_first_of("[/"));
}

bool decodePacket(const QByteArray& packet, Exiv2::XmpData& xmp)
{
    return !packet.isEmpty() && Exiv2::XmpParser::decode(xmp, packet.toStdString()) == 0;
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
    if (!decodePacket(packet, rest) && !decodePacket(XmpRepair::withoutDuplicates(packet), rest)) {
        content.isExtendedXmpLost = true;
        return;
    }
    std::set<std::string> known;
    for (const Exiv2::Xmpdatum& datum : xmp) {
        known.insert(wholeProperty(datum.key()));
    }
    for (const Exiv2::Xmpdatum& datum : rest) {
        if (!known.contains(wholeProperty(datum.key()))) {
            xmp.add(datum);
        }
    }
}
