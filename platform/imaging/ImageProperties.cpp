#include "ImageProperties.h"

#include "ImagePropertiesContent.h"
#include "MetadataAdapter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace
{

constexpr const char* kGpsPointer = "Exif.Image.GPSTag";

/// XMP properties in which programs keep subject keywords.
constexpr std::array kSubjectProperties{
    std::string_view("Xmp.dc.subject"),
    std::string_view("Xmp.lr.hierarchicalSubject"),
    std::string_view("Xmp.lr.weightedFlatSubject"),
    std::string_view("Xmp.MicrosoftPhoto.LastKeywordXMP"),
    std::string_view("Xmp.MicrosoftPhoto.LastKeywordIPTC"),
    std::string_view("Xmp.digiKam.TagsList"),
    std::string_view("Xmp.mediapro.CatalogSets"),
    std::string_view("Xmp.expressionmedia.CatalogSets"),
    std::string_view("Xmp.acdsee.categories"),
    std::string_view("Xmp.acdsee.keywords"),
    std::string_view("Xmp.mwg-kw.Keywords"),
    std::string_view("Xmp.pdf.Keywords"),
};

bool isSubject(std::string_view key)
{
    return std::ranges::find(kSubjectProperties, MetadataData::propertyOf(key)) !=
           kSubjectProperties.end();
}

bool isOfGps(const Exiv2::Exifdatum& datum)
{
    return datum.groupName() == "GPSInfo" || datum.key() == kGpsPointer;
}

/// XMP has the tags of the Exif block under the same names (ISO 16684-2, "exif").
bool isXmpOfGps(const Exiv2::Xmpdatum& datum)
{
    return std::string_view(datum.key()).starts_with("Xmp.exif.GPS");
}

/// Degrees, minutes and seconds to a ten-millionth (CIPA DC-008, GPSLatitude): 3 micrometres.
Exiv2::URationalValue degreesMinutesSeconds(double degrees)
{
    constexpr int64_t kPerSecond = 10'000'000;
    constexpr int64_t kPerMinute = 60 * kPerSecond;
    constexpr int64_t kPerDegree = 60 * kPerMinute;
    const double bounded = std::clamp(degrees, 0.0, 180.0);
    const int64_t parts = std::llround(bounded * static_cast<double>(kPerDegree));
    Exiv2::URationalValue value;
    value.value_.emplace_back(static_cast<uint32_t>(parts / kPerDegree), 1U);
    value.value_.emplace_back(static_cast<uint32_t>(parts % kPerDegree / kPerMinute), 1U);
    value.value_.emplace_back(static_cast<uint32_t>(parts % kPerMinute),
                              static_cast<uint32_t>(kPerSecond));
    return value;
}

} // namespace

ImageProperties::ImageProperties()
    : m_content(std::make_unique<Content>())
{
}

ImageProperties::ImageProperties(const ImageProperties& other)
    : m_content(std::make_unique<Content>(*other.m_content))
{
}

ImageProperties::ImageProperties(ImageProperties&& other) noexcept = default;

ImageProperties& ImageProperties::operator=(const ImageProperties& other)
{
    if (this != &other) {
        m_content = std::make_unique<Content>(*other.m_content);
    }
    return *this;
}

ImageProperties& ImageProperties::operator=(ImageProperties&& other) noexcept
{
    std::swap(m_content, other.m_content);
    return *this;
}

ImageProperties::~ImageProperties() = default;

template <typename Reading>
Result<ImageProperties> ImageProperties::readBy(const Reading& reading)
{
    ImageProperties properties;
    try {
        const Result<void> done = reading(*properties.m_content);
        return done.ok() ? Result<ImageProperties>(std::move(properties)) : done.error();
    } catch (const std::bad_alloc&) {
        return Error{ErrorCode::OutOfSpace,
                     QStringLiteral("There is not enough memory to read the metadata of %1")
                         .arg(properties.m_content->name)};
    }
}

Result<ImageProperties> ImageProperties::read(const QString& path)
{
    return readBy([&](Content& content) { return MetadataAdapter::readFile(path, content); });
}

Result<ImageProperties> ImageProperties::fromBytes(const QByteArray& bytes)
{
    return readBy([&](Content& content) { return MetadataAdapter::readBytes(bytes, content); });
}

bool ImageProperties::isWhole() const
{
    return !m_content->isReadInPart && !m_content->isXmpUnread && !m_content->isExtendedXmpLost;
}

bool ImageProperties::hasGps() const
{
    bool found = false;
    static_cast<void>(MetadataAdapter::attempt([&] {
        found = std::any_of(m_content->exif.begin(), m_content->exif.end(), isOfGps) ||
                std::any_of(m_content->xmp.begin(), m_content->xmp.end(), isXmpOfGps);
    }));
    return found;
}

void ImageProperties::setGps(const GpsPosition& position)
{
    if (!std::isfinite(position.latitude) || !std::isfinite(position.longitude)) {
        return;
    }
    Exiv2::ExifData& exif = m_content->exif;
    static_cast<void>(MetadataAdapter::attempt([&] {
        MetadataData::eraseWhere(exif, isOfGps);
        exif["Exif.GPSInfo.GPSVersionID"].setValue("2 3 0 0");
        exif["Exif.GPSInfo.GPSLatitudeRef"] = position.latitudeRef.toStdString();
        const Exiv2::URationalValue latitude = degreesMinutesSeconds(position.latitude);
        exif["Exif.GPSInfo.GPSLatitude"].setValue(&latitude);
        exif["Exif.GPSInfo.GPSLongitudeRef"] = position.longitudeRef.toStdString();
        const Exiv2::URationalValue longitude = degreesMinutesSeconds(position.longitude);
        exif["Exif.GPSInfo.GPSLongitude"].setValue(&longitude);
    }));
}

bool ImageProperties::hasIptc() const
{
    return !m_content->iptc.empty();
}

void ImageProperties::removeIptcKeywords()
{
    static_cast<void>(MetadataAdapter::attempt([this] {
        MetadataData::eraseWhere(m_content->iptc, [](const Exiv2::Iptcdatum& datum) {
            return datum.record() == Exiv2::IptcDataSets::application2 &&
                   datum.tag() == Exiv2::IptcDataSets::Keywords;
        });
    }));
}

void ImageProperties::removeExifKeywords()
{
    static_cast<void>(MetadataAdapter::attempt([this] {
        MetadataData::eraseWhere(m_content->exif, [](const Exiv2::Exifdatum& datum) {
            return datum.key() == "Exif.Image.XPKeywords";
        });
    }));
}

void ImageProperties::removeXmpSubjects()
{
    static_cast<void>(MetadataAdapter::attempt([this] {
        MetadataData::eraseWhere(
            m_content->xmp, [](const Exiv2::Xmpdatum& datum) { return isSubject(datum.key()); });
    }));
}
