#pragma once

#include "ImageProperties.h"

#include <QByteArray>
#include <QSize>
#include <QString>

#include <exiv2/exif.hpp>
#include <exiv2/iptc.hpp>
#include <exiv2/types.hpp>
#include <exiv2/xmp_exiv2.hpp>
#include <iterator>
#include <string_view>

/// What ImageProperties holds: the decoded blocks, and what the file says beside them.
struct ImageProperties::Content {
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    /// Byte order of the Exif block; maker notes survive best when it is written in the same.
    Exiv2::ByteOrder byteOrder{Exiv2::littleEndian};
    QSize pixels;         ///< stored size of the main picture; empty where unknown
    int bitsPerSample{0}; ///< 0 where unknown
    QByteArray iccProfile;
    /// From a CRW file, whose exposure and lens stand where only LibRaw finds them.
    bool isOfCrwFile{false};
    /// Whose they are, for messages: the path of the file, where there is one.
    QString name{QStringLiteral("the data")};
    /// A part of the file's metadata is damaged, and is not here.
    bool isReadInPart{false};
    /// Its XMP is not here, since reading it would take too long, or there are several packets.
    bool isXmpUnread{false};
    /// The XMP packet notes a second part that is not whole, or would take too long to read.
    bool isExtendedXmpLost{false};
};

/// What is asked of Exiv2's kinds of metadata that they do not know themselves.
namespace MetadataData
{

/// Removes every datum that the predicate holds for.
template <typename Data, typename Predicate>
void eraseWhere(Data& data, const Predicate& predicate)
{
    for (auto datum = data.begin(); datum != data.end();) {
        datum = predicate(*datum) ? data.erase(datum) : std::next(datum);
    }
}

/// The same, without copying the rest for each datum that goes.
template <typename Predicate>
void eraseWhere(Exiv2::XmpData& data, const Predicate& predicate)
{
    Exiv2::XmpData kept;
    for (const Exiv2::Xmpdatum& datum : data) {
        if (!predicate(datum)) {
            kept.add(datum);
        }
    }
    data = kept;
}

/// The property that a key of XMP names a part of: "Xmp.xmpMM.History" of
/// "Xmp.xmpMM.History[2]/stEvt:action". A view of `key`.
[[nodiscard]] inline std::string_view propertyOf(std::string_view key)
{
    return key.substr(0, key.find_first_of("[/"));
}

} // namespace MetadataData
