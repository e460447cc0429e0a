#include "ExifColor.h"

#include "MetadataAdapter.h"

#include <exiv2/exif.hpp>

namespace
{

constexpr const char* kColorSpace = "Exif.Photo.ColorSpace";
constexpr const char* kInteropIndex = "Exif.Iop.InteroperabilityIndex";
constexpr long kUncalibrated = 0xFFFF;

} // namespace

bool ExifColor::isAdobeRgb(QByteArrayView exif)
{
    bool isAdobe = false;
    const bool whole = MetadataAdapter::attempt([exif, &isAdobe] {
        Exiv2::ExifData data;
        Exiv2::ExifParser::decode(data,
                                  reinterpret_cast<const Exiv2::byte*>(exif.data()),
                                  static_cast<uint32_t>(exif.size()));
        const auto space = data.findKey(Exiv2::ExifKey(kColorSpace));
        const auto index = data.findKey(Exiv2::ExifKey(kInteropIndex));
        isAdobe = space != data.end() && space->count() > 0 && index != data.end() &&
                  space->toLong() == kUncalibrated && index->toString().rfind("R03", 0) == 0;
    });
    return whole && isAdobe;
}
