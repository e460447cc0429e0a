#include "HeifMetadata.h"

#include "HeifDecoder.h"
#include "ImagePropertiesContent.h"

#include <QByteArrayView>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace
{

constexpr uint16_t kUpright = 1;
constexpr const char* kOrientation = "Exif.Image.Orientation";
constexpr const char* kXmpOrientation = "Xmp.tiff.Orientation";

/// Places in pixels, or parts, of the rows as the sensor had them.
constexpr std::array kPlacesOfTags{
    std::string_view("Exif.Photo.SubjectArea"),
    std::string_view("Exif.Photo.SubjectLocation"),
    std::string_view("Exif.Image.SubjectLocation"),
    std::string_view("Xmp.exif.SubjectArea"),
    std::string_view("Xmp.exif.SubjectLocation"),
    std::string_view("Xmp.mwg-rs.Regions"),
};

/// Of the boxes that stand side by side in `bytes` (ISO/IEC 14496-12, 4.2) the content of the first
/// one that `wanted` takes; null where there is none.
template <typename Wanted>
QByteArrayView firstBox(QByteArrayView bytes, const Wanted& wanted)
{
    constexpr qsizetype kHead = 8;
    while (bytes.size() >= kHead) {
        const qint64 stated = qFromBigEndian<quint32>(bytes.data());
        // Boxes to the end of the file, or above 4 GB, hold pictures.
        if (stated < kHead || stated > bytes.size()) {
            return {};
        }
        const QByteArrayView box = bytes.first(stated).sliced(kHead);
        if (wanted(bytes.sliced(4, 4), box)) {
            return box;
        }
        bytes = bytes.sliced(stated);
    }
    return {};
}

QByteArrayView contentOf(QByteArrayView bytes, QByteArrayView name)
{
    return firstBox(bytes, [name](QByteArrayView type, QByteArrayView) { return type == name; });
}

/// Whether there is a turn (irot) or a mirroring (imir) among the properties of its pictures.
bool statesTurns(const QByteArray& bytes)
{
    constexpr qsizetype kVersion = 4;
    const QByteArrayView meta = contentOf(bytes, "meta");
    const QByteArrayView properties =
        contentOf(contentOf(meta.sliced(std::min(kVersion, meta.size())), "iprp"), "ipco");
    constexpr unsigned kQuarters = 3;
    return !firstBox(properties, [](QByteArrayView type, QByteArrayView box) {
                const unsigned value = box.isEmpty() ? 0U : static_cast<quint8>(box[0]);
                return type == "imir" || (type == "irot" && (value & kQuarters) != 0);
            }).isNull();
}

bool isPlace(std::string_view key)
{
    return std::ranges::find(kPlacesOfTags, MetadataData::propertyOf(key)) != kPlacesOfTags.end();
}

template <typename Data>
void removePlaces(Data& data)
{
    for (auto datum = data.begin(); datum != data.end();) {
        datum = isPlace(datum->key()) ? data.erase(datum) : std::next(datum);
    }
}

} // namespace

bool HeifMetadata::makeUpright(const QByteArray& bytes, ImageProperties::Content& content)
{
    const auto shown = HeifDecoder::size(bytes);
    const auto orientation = content.exif.findKey(Exiv2::ExifKey(kOrientation));
    const bool hasOrientation = orientation != content.exif.end();
    const bool isTurnedByTag =
        hasOrientation && orientation->count() > 0 && orientation->toLong(0) != kUpright;
    if (isTurnedByTag || statesTurns(bytes) || (shown && *shown != content.pixels)) {
        removePlaces(content.exif);
        removePlaces(content.xmp);
    }
    if (hasOrientation) {
        content.exif[kOrientation] = kUpright;
    }
    if (content.xmp.findKey(Exiv2::XmpKey(kXmpOrientation)) != content.xmp.end()) {
        content.xmp[kXmpOrientation] = std::to_string(kUpright);
    }
    content.pixels = shown.value_or(content.pixels);
    return shown.has_value();
}
