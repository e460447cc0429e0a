#include "RawMetadata.h"

#include "ImagePropertiesContent.h"

#include <QDateTime>
#include <QString>

#include <libraw/libraw.h>

#include <cmath>
#include <memory>
#include <string>

using namespace Qt::StringLiterals;

namespace
{

bool isTold(const Exiv2::ExifData& exif, const char* key)
{
    return exif.findKey(Exiv2::ExifKey(key)) != exif.end();
}

void addText(Exiv2::ExifData& exif, const char* key, const std::string& text)
{
    if (!text.empty() && !isTold(exif, key)) {
        exif[key] = text;
    }
}

/// Times below a third of a second are written as one over a whole number, as cameras do.
void addExposureTime(Exiv2::ExifData& exif, double seconds)
{
    constexpr auto kKey = "Exif.Photo.ExposureTime";
    if (!(seconds > 0.0) || seconds > 86400.0 || isTold(exif, kKey)) {
        return;
    }
    const double inverse = std::round(1.0 / seconds);
    const bool isFraction = seconds < 1.0 / 3.0 && inverse < 1e6;
    exif[kKey] = isFraction
                     ? Exiv2::URational(1, static_cast<uint32_t>(inverse))
                     : Exiv2::URational(static_cast<uint32_t>(std::lround(seconds * 1000.0)), 1000);
}

void addTenths(Exiv2::ExifData& exif, const char* key, double value)
{
    if (value > 0.0 && value < 1e5 && !isTold(exif, key)) {
        exif[key] = Exiv2::URational(static_cast<uint32_t>(std::lround(value * 10.0)), 10);
    }
}

/// LibRaw's turns: 3 is half a turn, 5 a quarter to the left, 6 a quarter to the right.
uint16_t orientationOfFlip(int flip)
{
    switch (flip) {
    case 3:
        return 3;
    case 5:
        return 8;
    case 6:
        return 6;
    default:
        return 1;
    }
}

/// Backs of these makers note in data of their own how they were turned, which Exiv2 does not read.
bool isOfCameraBack(const Exiv2::ExifData& exif)
{
    const auto make = exif.findKey(Exiv2::ExifKey("Exif.Image.Make"));
    const std::string name = make == exif.end() ? std::string() : make->toString();
    return name.starts_with("Leaf") || name.starts_with("Phase One");
}

void complete(const LibRaw& raw, ImageProperties::Content& content)
{
    const libraw_data_t& data = raw.imgdata;
    Exiv2::ExifData& exif = content.exif;
    addText(exif, "Exif.Image.Make", data.idata.make);
    addText(exif, "Exif.Image.Model", data.idata.model);
    if (data.other.timestamp > 0) {
        // LibRaw makes the camera's wall clock a time stamp by the local time zone.
        const QString text =
            QDateTime::fromSecsSinceEpoch(data.other.timestamp).toString(u"yyyy:MM:dd HH:mm:ss");
        addText(exif, "Exif.Photo.DateTimeOriginal", text.toStdString());
    }
    addExposureTime(exif, static_cast<double>(data.other.shutter));
    addTenths(exif, "Exif.Photo.FNumber", static_cast<double>(data.other.aperture));
    addTenths(exif, "Exif.Photo.FocalLength", static_cast<double>(data.other.focal_len));
    const float speed = data.other.iso_speed;
    if (speed >= 1.0F && speed < 65535.0F && !isTold(exif, "Exif.Photo.ISOSpeedRatings")) {
        exif["Exif.Photo.ISOSpeedRatings"] = static_cast<uint16_t>(std::lround(speed));
    }
    if (!isTold(exif, "Exif.Image.Orientation") || isOfCameraBack(exif)) {
        exif["Exif.Image.Orientation"] = orientationOfFlip(data.sizes.flip);
    }
    if (content.pixels.isEmpty()) {
        content.pixels = QSize(data.sizes.width, data.sizes.height);
    }
}

/// A file that names its camera, or is a picture of a known size, has told Exiv2 what it has to
/// tell.
bool saysEnough(const ImageProperties::Content& content)
{
    return isTold(content.exif, "Exif.Image.Make") ||
           isTold(content.exif, "Exif.PanasonicRaw.Make") || !content.pixels.isEmpty();
}

/// Exiv2's exposure time of CRW files is not always the camera's: five seconds of an EOS D30 come
/// out as one.
void removeDoubtfulExposure(Exiv2::ExifData& exif)
{
    const auto found = exif.findKey(Exiv2::ExifKey("Exif.Photo.ExposureTime"));
    if (found != exif.end()) {
        exif.erase(found);
    }
}

/// A record of CRW files has room for two numbers. The serial number is the first; Exiv2 takes what
/// is left in the room behind it for a second.
void keepFirstSerialNumber(Exiv2::ExifData& exif)
{
    const auto found = exif.findKey(Exiv2::ExifKey("Exif.Canon.SerialNumber"));
    if (found != exif.end() && found->count() > 1) {
        *found = static_cast<uint32_t>(found->toLong(0));
    }
}

/// In place of LibRaw's own, which writes to standard error. Damage that matters shows in what was
/// opened, and when the picture is decoded.
void ignoreDataError(void* /*object*/, const char* /*file*/, int /*offset*/) {}

template <typename Open>
bool completeWith(const Open& open, ImageProperties::Content& content)
{
    if (saysEnough(content) && !content.isOfCrwFile && !isOfCameraBack(content.exif)) {
        return false;
    }
    // LibRaw's object is too large for the stack of a thread.
    const auto raw = std::make_unique<LibRaw>();
    raw->set_dataerror_handler(&ignoreDataError, nullptr);
    if (open(*raw) != LIBRAW_SUCCESS) {
        return false;
    }
    if (content.isOfCrwFile) {
        keepFirstSerialNumber(content.exif);
        if (raw->imgdata.other.shutter > 0.0F) {
            removeDoubtfulExposure(content.exif);
        }
    }
    complete(*raw, content);
    return true;
}

} // namespace

namespace RawMetadata
{

bool completeFromFile(const QByteArray& path, ImageProperties::Content& content)
{
    return completeWith([&](LibRaw& raw) { return raw.open_file(path.constData()); }, content);
}

bool completeFromBytes(const QByteArray& bytes, ImageProperties::Content& content)
{
    return completeWith(
        [&](LibRaw& raw) {
            // LibRaw takes a pointer to what it does not change.
            return raw.open_buffer(const_cast<char*>(bytes.constData()),
                                   static_cast<size_t>(bytes.size()));
        },
        content);
}

} // namespace RawMetadata
