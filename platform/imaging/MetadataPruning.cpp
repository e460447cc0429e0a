#include "MetadataPruning.h"

#include "ImagePropertiesContent.h"
#include "MetadataTags.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace
{

/// Directories of pictures that the JPEG does not have, beside the standard's.
constexpr std::array kPictureGroups{
    std::string_view("Image2"),
    std::string_view("Image3"),
    std::string_view("PanasonicRaw"),
    std::string_view("MpfInfo"),
    std::string_view("NikonPreview"),
    std::string_view("SamsungPreview"),
};

constexpr std::array kPictureGroupBeginnings{
    std::string_view("SubImage"),
    std::string_view("SubThumb"),
};

/// Tags of maker notes that describe the original's picture or point into it.
constexpr std::array kUntrueKeys{
    std::string_view("Exif.Nikon3.Preview"),
    std::string_view("Exif.Canon.PreviewImageInfo"),
    std::string_view("Exif.Canon.ThumbnailImageValidArea"),
    std::string_view("Exif.Canon.RawDataOffset"),
    std::string_view("Exif.Canon.OriginalDecisionDataOffset"),
    std::string_view("Exif.Canon.VRDOffset"),
    std::string_view("Exif.Olympus.ThumbnailImage"),
    std::string_view("Exif.Olympus.PreviewImage"),
    std::string_view("Exif.Olympus.Thumbnail"),
    std::string_view("Exif.Olympus.ThumbnailOffset"),
    std::string_view("Exif.Olympus.ThumbnailLength"),
    std::string_view("Exif.Olympus2.ThumbnailImage"),
    std::string_view("Exif.Olympus2.PreviewImage"),
    std::string_view("Exif.Olympus2.Thumbnail"),
    std::string_view("Exif.Olympus2.ThumbnailOffset"),
    std::string_view("Exif.Olympus2.ThumbnailLength"),
    std::string_view("Exif.OlympusCs.PreviewImageStart"),
    std::string_view("Exif.OlympusCs.PreviewImageLength"),
    std::string_view("Exif.OlympusCs.PreviewImageValid"),
    std::string_view("Exif.Minolta.ThumbnailOffset"),
    std::string_view("Exif.Minolta.ThumbnailLength"),
    std::string_view("Exif.Minolta.Thumbnail"),
    std::string_view("Exif.SonyMinolta.ThumbnailOffset"),
    std::string_view("Exif.SonyMinolta.ThumbnailLength"),
    std::string_view("Exif.SonyMinolta.Thumbnail"),
    std::string_view("Exif.Sony1.PreviewImage"),
    std::string_view("Exif.Sony1.PreviewImageSize"),
    std::string_view("Exif.Sony2.PreviewImage"),
    std::string_view("Exif.Sony2.PreviewImageSize"),
    std::string_view("Exif.Samsung2.Preview"),
    std::string_view("Exif.Pentax.PreviewOffset"),
    std::string_view("Exif.Pentax.PreviewLength"),
    std::string_view("Exif.Pentax.PreviewResolution"),
    std::string_view("Exif.Pentax.PreviewImageBorders"),
    std::string_view("Exif.PentaxDng.PreviewOffset"),
    std::string_view("Exif.PentaxDng.PreviewLength"),
    std::string_view("Exif.PentaxDng.PreviewResolution"),
    std::string_view("Exif.PentaxDng.PreviewImageBorders"),
    std::string_view("Exif.Casio2.PreviewImage"),
    std::string_view("Exif.Casio2.PreviewImageSize"),
    std::string_view("Exif.Casio2.PreviewImageLength"),
    std::string_view("Exif.Casio2.PreviewImageStart"),
};

/// Tags in pixels of the original, untrue where the copy has another size.
constexpr std::array kKeysOfSize{
    std::string_view("Exif.Photo.SubjectArea"),
    std::string_view("Exif.Photo.SubjectLocation"),
    std::string_view("Exif.Photo.FocalPlaneXResolution"),
    std::string_view("Exif.Photo.FocalPlaneYResolution"),
    std::string_view("Exif.Photo.FocalPlaneResolutionUnit"),
    std::string_view("Exif.Image.SubjectLocation"),
    std::string_view("Exif.Image.FocalPlaneXResolution"),
    std::string_view("Exif.Image.FocalPlaneYResolution"),
    std::string_view("Exif.Image.FocalPlaneResolutionUnit"),
    std::string_view("Exif.Image.0xa20e"), // the Exif directory's numbers, misplaced
    std::string_view("Exif.Image.0xa20f"),
    std::string_view("Exif.Image.0xa210"),
    std::string_view("Exif.Image.0xa214"),
};

/// Where RAW files have tags that a JPEG has in another directory (TIFF/EP and Panasonic put them
/// into the first one). The value moves unless the JPEG's own place is taken.
struct Move {
    const char* from;
    const char* to;
};

constexpr std::array kMoves{
    Move{"Exif.PanasonicRaw.Make", "Exif.Image.Make"},
    Move{"Exif.PanasonicRaw.Model", "Exif.Image.Model"},
    Move{"Exif.PanasonicRaw.Orientation", "Exif.Image.Orientation"},
    Move{"Exif.PanasonicRaw.ISOSpeed", "Exif.Photo.ISOSpeedRatings"},
    Move{"Exif.Image.CameraSerialNumber", "Exif.Photo.BodySerialNumber"},
    Move{"Exif.Image.LensInfo", "Exif.Photo.LensSpecification"},
    Move{"Exif.Image.ExposureTime", "Exif.Photo.ExposureTime"},
    Move{"Exif.Image.FNumber", "Exif.Photo.FNumber"},
    Move{"Exif.Image.ExposureProgram", "Exif.Photo.ExposureProgram"},
    Move{"Exif.Image.ISOSpeedRatings", "Exif.Photo.ISOSpeedRatings"},
    Move{"Exif.Image.DateTimeOriginal", "Exif.Photo.DateTimeOriginal"},
    Move{"Exif.Image.ShutterSpeedValue", "Exif.Photo.ShutterSpeedValue"},
    Move{"Exif.Image.ApertureValue", "Exif.Photo.ApertureValue"},
    Move{"Exif.Image.BrightnessValue", "Exif.Photo.BrightnessValue"},
    Move{"Exif.Image.ExposureBiasValue", "Exif.Photo.ExposureBiasValue"},
    Move{"Exif.Image.MaxApertureValue", "Exif.Photo.MaxApertureValue"},
    Move{"Exif.Image.SubjectDistance", "Exif.Photo.SubjectDistance"},
    Move{"Exif.Image.MeteringMode", "Exif.Photo.MeteringMode"},
    Move{"Exif.Image.LightSource", "Exif.Photo.LightSource"},
    Move{"Exif.Image.Flash", "Exif.Photo.Flash"},
    Move{"Exif.Image.FocalLength", "Exif.Photo.FocalLength"},
};

template <typename List>
bool contains(const List& list, std::string_view text)
{
    return std::ranges::find(list, text) != list.end();
}

/// Of the standard's directories what is known to hold is carried, of maker notes what is not known
/// not to: nobody knows all that makers write.
bool isCarried(const Exiv2::Exifdatum& datum)
{
    const std::string group = datum.groupName();
    if (!MetadataPruning::isOfMakerNote(group)) {
        return MetadataTags::isCarried(group, datum.tag());
    }
    const bool isPicture =
        contains(kPictureGroups, group) ||
        std::ranges::any_of(kPictureGroupBeginnings, [&group](std::string_view beginning) {
            return std::string_view(group).starts_with(beginning);
        });
    return !isPicture && !contains(kUntrueKeys, datum.key());
}

/// Damaged directories hold entries of types that no reader takes (TIFF 6.0 knows 1 to 12, its
/// supplement 13).
bool isOfKnownType(const Exiv2::Exifdatum& datum)
{
    return MetadataPruning::isOfMakerNote(datum.groupName()) ||
           (datum.typeId() >= Exiv2::unsignedByte && datum.typeId() <= Exiv2::tiffIfd);
}

bool has(const Exiv2::ExifData& exif, const char* key)
{
    return exif.findKey(Exiv2::ExifKey(key)) != exif.end();
}

void moveTags(Exiv2::ExifData& exif)
{
    for (const Move& move : kMoves) {
        const auto found = exif.findKey(Exiv2::ExifKey(move.from));
        if (found == exif.end()) {
            continue;
        }
        const Exiv2::Exifdatum datum = *found;
        exif.erase(found);
        if (datum.count() > 0 && !has(exif, move.to)) {
            exif.add(Exiv2::ExifKey(move.to), &datum.value());
        }
    }
}

/// Digital pictures, and an object's data with what stands before and after them (IPTC-IIM).
bool isOfPictureRecord(const Exiv2::Iptcdatum& datum)
{
    constexpr std::array<uint16_t, 4> kRecords{3, 7, 8, 9};
    return std::ranges::find(kRecords, datum.record()) != kRecords.end();
}

bool isOfIptcPreview(const Exiv2::Iptcdatum& datum)
{
    return datum.record() == Exiv2::IptcDataSets::application2 &&
           datum.tag() >= Exiv2::IptcDataSets::PreviewFormat &&
           datum.tag() <= Exiv2::IptcDataSets::Preview;
}

double numberOf(const Exiv2::ExifData& exif, const char* key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() || found->count() == 0 ? 0.0 : static_cast<double>(found->toLong(0));
}

/// What the standard asks of every JPEG (CIPA DC-008, 4.6.8), where the original does not say it.
void addRequired(Exiv2::ExifData& exif)
{
    if (!has(exif, "Exif.Image.XResolution") || !has(exif, "Exif.Image.YResolution")) {
        exif["Exif.Image.XResolution"] = Exiv2::URational(72, 1);
        exif["Exif.Image.YResolution"] = Exiv2::URational(72, 1);
        exif["Exif.Image.ResolutionUnit"] = uint16_t{2};
    }
    const bool hasGpsTags =
        std::any_of(exif.begin(), exif.end(), [](const Exiv2::Exifdatum& datum) {
            return datum.groupName() == "GPSInfo";
        });
    if (has(exif, "Exif.Image.GPSTag") && !hasGpsTags) {
        // A directory of no entries would not be written; that there is one counts.
        exif["Exif.GPSInfo.GPSVersionID"].setValue("2 3 0 0");
    }
    if (!has(exif, "Exif.Photo.ExifVersion")) {
        exif["Exif.Photo.ExifVersion"].setValue("48 50 51 48");
    }
    if (!has(exif, "Exif.Photo.FlashpixVersion")) {
        exif["Exif.Photo.FlashpixVersion"].setValue("48 49 48 48");
    }
}

} // namespace

namespace MetadataPruning
{

std::vector<std::string_view> namedTags()
{
    std::vector<std::string_view> all(kUntrueKeys.begin(), kUntrueKeys.end());
    all.insert(all.end(), kKeysOfSize.begin(), kKeysOfSize.end());
    for (const Move& move : kMoves) {
        all.insert(all.end(), {move.from, move.to});
    }
    return all;
}

bool hasScaleOfOriginal(const ImageProperties::Content& content, QSize pixels)
{
    constexpr double kEdges = 0.03;
    double width = numberOf(content.exif, "Exif.Photo.PixelXDimension");
    double height = numberOf(content.exif, "Exif.Photo.PixelYDimension");
    if (width <= 0.0 || height <= 0.0) {
        width = content.pixels.width();
        height = content.pixels.height();
    }
    return std::abs(pixels.width() - width) <= kEdges * width &&
           std::abs(pixels.height() - height) <= kEdges * height;
}

bool isOfMakerNote(const std::string& group)
{
    constexpr std::array kStandardGroups{std::string_view("Image"),
                                         std::string_view("Photo"),
                                         std::string_view("GPSInfo"),
                                         std::string_view("Iop"),
                                         std::string_view("Thumbnail")};
    return !contains(kStandardGroups, group);
}

void removeMakerNote(ImageProperties::Content& content)
{
    MetadataData::eraseWhere(content.exif, [](const Exiv2::Exifdatum& datum) {
        return isOfMakerNote(datum.groupName()) || datum.key() == "Exif.Photo.MakerNote";
    });
}

void makeExifTrue(ImageProperties::Content& content, QSize pixels)
{
    Exiv2::ExifData& exif = content.exif;
    moveTags(exif);
    MetadataData::eraseWhere(exif, [](const Exiv2::Exifdatum& datum) {
        return !isCarried(datum) || !isOfKnownType(datum);
    });
    if (!hasScaleOfOriginal(content, pixels)) {
        MetadataData::eraseWhere(
            exif, [](const Exiv2::Exifdatum& datum) { return contains(kKeysOfSize, datum.key()); });
    }
    exif["Exif.Photo.PixelXDimension"] = static_cast<uint32_t>(pixels.width());
    exif["Exif.Photo.PixelYDimension"] = static_cast<uint32_t>(pixels.height());
    exif["Exif.Photo.ColorSpace"] = uint16_t{1};
    exif["Exif.Photo.ComponentsConfiguration"].setValue("1 2 3 0");
    // The encoder averages blocks of pixels: chroma lies in their middle.
    exif["Exif.Image.YCbCrPositioning"] = uint16_t{1};
    if (has(exif, "Exif.Iop.InteroperabilityIndex")) {
        exif["Exif.Iop.InteroperabilityIndex"] = std::string("R98");
    }
    addRequired(exif);
}

void makeIptcTrue(Exiv2::IptcData& iptc)
{
    MetadataData::eraseWhere(iptc, [](const Exiv2::Iptcdatum& datum) {
        return isOfPictureRecord(datum) || isOfIptcPreview(datum);
    });
}

} // namespace MetadataPruning
