#include "ImagePropertiesContent.h"
#include "MetadataAdapter.h"
#include "MetadataValues.h"

#include <QTimeZone>

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace MetadataValues;

namespace
{

/// Where a number or text of ImageFacts stands; of several keys the first that is there counts.
struct FactSource {
    const char* name;
    const char* key;
};

constexpr std::array kTextSources{
    FactSource{"Make", "Exif.Image.Make"},
    FactSource{"Make", "Exif.PanasonicRaw.Make"},
    FactSource{"Model", "Exif.Image.Model"},
    FactSource{"Model", "Exif.PanasonicRaw.Model"},
    FactSource{"LensModel", "Exif.Photo.LensModel"},
    FactSource{"LensModel", "Exif.Canon.LensModel"},
    FactSource{"Software", "Exif.Image.Software"},
    FactSource{"Artist", "Exif.Image.Artist"},
    FactSource{"Copyright", "Exif.Image.Copyright"},
    FactSource{"ImageDescription", "Exif.Image.ImageDescription"},
    FactSource{"CameraSerialNumber", "Exif.Photo.BodySerialNumber"},
    FactSource{"CameraSerialNumber", "Exif.Image.CameraSerialNumber"},
    FactSource{"Firmware", "Exif.Canon.FirmwareVersion"},
};

constexpr std::array kNumberSources{
    FactSource{"ApertureValue", "Exif.Photo.FNumber"},
    FactSource{"ApertureValue", "Exif.Image.FNumber"},
    FactSource{"ShutterSpeed", "Exif.Photo.ExposureTime"},
    FactSource{"ShutterSpeed", "Exif.Image.ExposureTime"},
    FactSource{"ISOSpeedRating", "Exif.Photo.ISOSpeedRatings"},
    FactSource{"ISOSpeedRating", "Exif.Image.ISOSpeedRatings"},
    FactSource{"ISOSpeedRating", "Exif.PanasonicRaw.ISOSpeed"},
    FactSource{"FocalLength", "Exif.Photo.FocalLength"},
    FactSource{"FocalLength", "Exif.Image.FocalLength"},
    FactSource{"FocalLenIn35mmFilm", "Exif.Photo.FocalLengthIn35mmFilm"},
    FactSource{"ExposureBiasValue", "Exif.Photo.ExposureBiasValue"},
    FactSource{"ExposureBiasValue", "Exif.Image.ExposureBiasValue"},
    FactSource{"ExposureMode", "Exif.Photo.ExposureMode"},
    FactSource{"ExposureProgram", "Exif.Photo.ExposureProgram"},
    FactSource{"ExposureProgram", "Exif.Image.ExposureProgram"},
    FactSource{"Flash", "Exif.Photo.Flash"},
    FactSource{"Flash", "Exif.Image.Flash"},
    FactSource{"MeteringMode", "Exif.Photo.MeteringMode"},
    FactSource{"MeteringMode", "Exif.Image.MeteringMode"},
    FactSource{"WhiteBalance", "Exif.Photo.WhiteBalance"},
    FactSource{"LightSource", "Exif.Photo.LightSource"},
    FactSource{"LightSource", "Exif.Image.LightSource"},
    FactSource{"SceneCaptureType", "Exif.Photo.SceneCaptureType"},
    FactSource{"ColorSpace", "Exif.Photo.ColorSpace"},
    FactSource{"BrightnessValue", "Exif.Photo.BrightnessValue"},
    FactSource{"MaxApertureValue", "Exif.Photo.MaxApertureValue"},
    FactSource{"Contrast", "Exif.Photo.Contrast"},
    FactSource{"Saturation", "Exif.Photo.Saturation"},
    FactSource{"Sharpness", "Exif.Photo.Sharpness"},
};

/// ISO ratings that do not fit their field are written as this, and in another field (CIPA DC-008,
/// PhotographicSensitivity).
constexpr double kIsoElsewhere = 65535.0;

/// "0231" is 2.3.1, "0230" is 2.3, "0100" is 1.0 (CIPA DC-008, ExifVersion).
QString versionText(const Exiv2::ExifData& exif, const char* key)
{
    const QByteArray digits = bytesOf(exif, key);
    if (digits.size() != 4) {
        return {};
    }
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') {
            return {};
        }
    }
    const QString text = u"%1.%2"_s.arg(digits.left(2).toInt()).arg(digits.mid(2, 1).toInt());
    return digits.at(3) == '0' ? text : text + u'.' + QChar::fromLatin1(digits.at(3));
}

void readTexts(const Exiv2::ExifData& exif, QMap<QString, QString>& texts)
{
    for (const FactSource& source : kTextSources) {
        const QString name = QString::fromLatin1(source.name);
        const QString text = textOf(exif, source.key);
        if (!text.isEmpty() && !texts.contains(name)) {
            texts.insert(name, text);
        }
    }
    const std::array versions{FactSource{"ExifVersion", "Exif.Photo.ExifVersion"},
                              FactSource{"FlashPixVersion", "Exif.Photo.FlashpixVersion"}};
    for (const FactSource& source : versions) {
        const QString version = versionText(exif, source.key);
        if (!version.isEmpty()) {
            texts.insert(QString::fromLatin1(source.name), version);
        }
    }
    const QByteArray gps = bytesOf(exif, "Exif.GPSInfo.GPSVersionID");
    if (gps.size() == 4) {
        QStringList parts;
        for (const char part : gps) {
            parts.append(QString::number(static_cast<unsigned char>(part)));
        }
        texts.insert(u"GPSVersion"_s, parts.join(u'.'));
    }
}

/// Fields that only say the same in APEX units, the exponents of CIPA DC-008, annex C.
void readApexValues(const Exiv2::ExifData& exif, QMap<QString, double>& numbers)
{
    const std::optional<double> shutter = numberOf(exif, "Exif.Photo.ShutterSpeedValue");
    if (shutter && !numbers.contains(u"ShutterSpeed"_s)) {
        numbers.insert(u"ShutterSpeed"_s, std::exp2(-*shutter));
    }
    const std::optional<double> aperture = numberOf(exif, "Exif.Photo.ApertureValue");
    if (aperture && !numbers.contains(u"ApertureValue"_s)) {
        numbers.insert(u"ApertureValue"_s, std::exp2(*aperture / 2.0));
    }
}

void readNumbers(const Exiv2::ExifData& exif, QMap<QString, double>& numbers)
{
    for (const FactSource& source : kNumberSources) {
        const QString name = QString::fromLatin1(source.name);
        const std::optional<double> number = numberOf(exif, source.key);
        if (number && !numbers.contains(name)) {
            numbers.insert(name, *number);
        }
    }
    readApexValues(exif, numbers);
    if (numbers.value(u"ISOSpeedRating"_s) == kIsoElsewhere) {
        const std::optional<double> index = numberOf(exif, "Exif.Photo.RecommendedExposureIndex");
        const std::optional<double> speed = numberOf(exif, "Exif.Photo.StandardOutputSensitivity");
        numbers.insert(u"ISOSpeedRating"_s, index.value_or(speed.value_or(kIsoElsewhere)));
    }
    const std::optional<double> shortest = numberOf(exif, "Exif.Photo.LensSpecification", 0);
    const std::optional<double> longest = numberOf(exif, "Exif.Photo.LensSpecification", 1);
    if (shortest && longest && *shortest > 0.0) {
        numbers.insert(u"LensMinMM"_s, *shortest);
        numbers.insert(u"LensMaxMM"_s, *longest);
    }
}

std::optional<QDateTime>
dateFrom(const Exiv2::ExifData& exif, const char* key, const char* fractionKey)
{
    const QString text = textOf(exif, key).left(19);
    QDateTime date = QDateTime::fromString(text, u"yyyy:MM:dd HH:mm:ss"_s);
    if (!date.isValid()) {
        return std::nullopt;
    }
    date.setTimeSpec(Qt::UTC);
    // The digits behind the decimal point, as many as the camera has.
    bool isNumber = false;
    const double fraction = (u"0."_s + textOf(exif, fractionKey)).toDouble(&isNumber);
    if (isNumber && fraction > 0.0) {
        date = date.addMSecs(std::min(std::llround(fraction * 1000.0), 999LL));
    }
    return date;
}

std::optional<QDateTime> dateTaken(const Exiv2::ExifData& exif)
{
    constexpr auto kOriginalFraction = "Exif.Photo.SubSecTimeOriginal";
    auto date = dateFrom(exif, "Exif.Photo.DateTimeOriginal", kOriginalFraction);
    if (!date) {
        date = dateFrom(exif, "Exif.Image.DateTimeOriginal", kOriginalFraction);
    }
    if (!date) {
        date = dateFrom(exif, "Exif.Photo.DateTimeDigitized", "Exif.Photo.SubSecTimeDigitized");
    }
    return date ? date : dateFrom(exif, "Exif.Image.DateTime", "Exif.Photo.SubSecTime");
}

/// Degrees, minutes and seconds with their reference, as signed degrees.
std::optional<double> coordinate(const Exiv2::ExifData& exif,
                                 const char* key,
                                 const char* referenceKey,
                                 QChar negativeReference,
                                 double limit)
{
    const std::optional<double> degrees = numberOf(exif, key, 0);
    const QString reference = textOf(exif, referenceKey);
    if (!degrees || reference.isEmpty()) {
        return std::nullopt;
    }
    const double unsignedDegrees = *degrees + numberOf(exif, key, 1).value_or(0.0) / 60.0 +
                                   numberOf(exif, key, 2).value_or(0.0) / 3600.0;
    if (!(unsignedDegrees >= 0.0 && unsignedDegrees <= limit)) {
        return std::nullopt;
    }
    return reference.at(0).toUpper() == negativeReference ? -unsignedDegrees : unsignedDegrees;
}

/// "48,30.5N" or "48,30,30N" (ISO 16684-2, GPSCoordinate) as signed degrees.
std::optional<double>
xmpCoordinate(const Exiv2::XmpData& xmp, const char* key, QStringView references, double limit)
{
    const auto found = xmp.findKey(Exiv2::XmpKey(key));
    const QString text =
        found == xmp.end() ? QString() : QString::fromStdString(found->toString()).trimmed();
    if (text.isEmpty() || !references.contains(text.back().toUpper())) {
        return std::nullopt;
    }
    double degrees = 0.0;
    double unit = 1.0;
    for (const QString& part : text.chopped(1).split(u',')) {
        bool isNumber = false;
        degrees += part.toDouble(&isNumber) * unit;
        if (!isNumber) {
            return std::nullopt;
        }
        unit /= 60.0;
    }
    if (!(degrees >= 0.0 && degrees <= limit)) {
        return std::nullopt;
    }
    return text.back().toUpper() == references.back() ? -degrees : degrees;
}

void readXmpPosition(const Exiv2::XmpData& xmp, ImageFacts& facts)
{
    const auto latitude = xmpCoordinate(xmp, "Xmp.exif.GPSLatitude", u"NS", 90.0);
    const auto longitude = xmpCoordinate(xmp, "Xmp.exif.GPSLongitude", u"EW", 180.0);
    if (latitude && longitude) {
        facts.latitude = latitude;
        facts.longitude = longitude;
    }
}

void readPosition(const Exiv2::ExifData& exif, ImageFacts& facts)
{
    const auto latitude =
        coordinate(exif, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef", u'S', 90.0);
    const auto longitude =
        coordinate(exif, "Exif.GPSInfo.GPSLongitude", "Exif.GPSInfo.GPSLongitudeRef", u'W', 180.0);
    if (latitude && longitude) {
        facts.latitude = latitude;
        facts.longitude = longitude;
    }
    facts.altitude = numberOf(exif, "Exif.GPSInfo.GPSAltitude");
    if (facts.altitude && numberOf(exif, "Exif.GPSInfo.GPSAltitudeRef") == 1.0) {
        facts.altitude = -*facts.altitude;
    }
}

int orientation(const Exiv2::ExifData& exif)
{
    for (const char* const key : {"Exif.Image.Orientation", "Exif.PanasonicRaw.Orientation"}) {
        const std::optional<double> value = numberOf(exif, key);
        if (value && *value >= 1.0 && *value <= 8.0) {
            return static_cast<int>(*value);
        }
    }
    return 1;
}

} // namespace

ImageFacts ImageProperties::facts() const
{
    ImageFacts facts;
    facts.pixels = m_content->pixels;
    static_cast<void>(MetadataAdapter::attempt([&] {
        const Exiv2::ExifData& exif = m_content->exif;
        facts.orientation = orientation(exif);
        facts.dateTaken = dateTaken(exif);
        readPosition(exif, facts);
        if (!facts.latitude) {
            readXmpPosition(m_content->xmp, facts);
        }
        readTexts(exif, facts.texts);
        readNumbers(exif, facts.numbers);
        readDescriptions(*m_content, facts);
    }));
    if (m_content->bitsPerSample > 0) {
        facts.numbers.insert(u"Depth"_s, m_content->bitsPerSample);
    }
    facts.colorProfileName = profileName(m_content->iccProfile);
    return facts;
}
