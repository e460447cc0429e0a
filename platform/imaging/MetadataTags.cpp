#include "MetadataTags.h"

#include <algorithm>
#include <array>

namespace
{

/// Tags from `first` to `last`, both included.
struct TagRange {
    uint16_t first;
    uint16_t last;
};

constexpr TagRange one(uint16_t tag)
{
    return {.first = tag, .last = tag};
}

/// Of the Exif directory. RAW files have many of them in their first directory (TIFF/EP).
constexpr std::array kOfExposure{
    one(0x829a),              // ExposureTime
    one(0x829d),              // FNumber
    one(0x8822),              // ExposureProgram
    one(0x8824),              // SpectralSensitivity
    one(0x8827),              // ISOSpeedRatings
    one(0x8828),              // OECF
    TagRange{0x8829, 0x882b}, // Interlace, TimeZoneOffset, SelfTimerMode of TIFF/EP
    TagRange{0x8830, 0x8835}, // SensitivityType to ISOSpeedLatitudezzz
    TagRange{0x9003, 0x9004}, // DateTimeOriginal, DateTimeDigitized
    TagRange{0x9010, 0x9012}, // OffsetTime, OffsetTimeOriginal, OffsetTimeDigitized
    TagRange{0x9201, 0x920a}, // ShutterSpeedValue to FocalLength
    TagRange{0x9211, 0x9213}, // ImageNumber, SecurityClassification, ImageHistory of TIFF/EP
    one(0x9214),              // SubjectArea
    one(0x9286),              // UserComment
    TagRange{0x9290, 0x9292}, // SubSecTime, SubSecTimeOriginal, SubSecTimeDigitized
    TagRange{0x9400, 0x9405}, // AmbientTemperature to CameraElevationAngle
    one(0xa004),              // RelatedSoundFile
    TagRange{0xa20b, 0xa20c}, // FlashEnergy, SpatialFrequencyResponse
    TagRange{0xa20e, 0xa210}, // FocalPlaneXResolution to FocalPlaneResolutionUnit
    TagRange{0xa214, 0xa215}, // SubjectLocation, ExposureIndex
    one(0xa217),              // SensingMethod
    TagRange{0xa300, 0xa301}, // FileSource, SceneType
    TagRange{0xa401, 0xa40c}, // CustomRendered to SubjectDistanceRange
    one(0xa420),              // ImageUniqueID
    TagRange{0xa430, 0xa43c}, // CameraOwnerName to MetadataEditingSoftware
    TagRange{0xa460, 0xa462}, // CompositeImage to SourceExposureTimesOfCompositeImage
};

/// Of the Exif directory alone.
constexpr std::array kOfExifDirectory{
    one(0x9000),              // ExifVersion
    one(0x9101),              // ComponentsConfiguration
    one(0x927c),              // MakerNote
    TagRange{0xa000, 0xa003}, // FlashpixVersion, ColorSpace, PixelXDimension, PixelYDimension
    one(0xa005),              // InteroperabilityTag
};

constexpr std::array kOfFirstDirectory{
    one(0x000b),              // ProcessingSoftware
    TagRange{0x010d, 0x0110}, // DocumentName, ImageDescription, Make, Model
    one(0x0112),              // Orientation
    TagRange{0x011a, 0x011b}, // XResolution, YResolution
    TagRange{0x011d, 0x011f}, // PageName, XPosition, YPosition
    TagRange{0x0128, 0x0129}, // ResolutionUnit, PageNumber
    TagRange{0x0131, 0x0132}, // Software, DateTime
    TagRange{0x013b, 0x013c}, // Artist, HostComputer
    one(0x0151),              // TargetPrinter
    one(0x0213),              // YCbCrPositioning
    one(0x4746),              // Rating
    one(0x4749),              // RatingPercent
    one(0x800d),              // ImageID
    one(0x828f),              // BatteryLevel
    one(0x8298),              // Copyright
    one(0x8769),              // ExifTag
    one(0x8825),              // GPSTag
    TagRange{0x920b, 0x9215}, // FlashEnergy to ExposureIndex of TIFF/EP
    one(0x9217),              // SensingMethod of TIFF/EP
    TagRange{0x9c9b, 0x9c9f}, // XPTitle, XPComment, XPAuthor, XPKeywords, XPSubject
    one(0xc4a5),              // PrintImageMatching
    TagRange{0xc614, 0xc615}, // UniqueCameraModel, LocalizedCameraModel
    one(0xc68b),              // OriginalRawFileName
    TagRange{0xc6d2, 0xc6d3}, // Panasonic's titles
    TagRange{0xc763, 0xc764}, // TimeCodes, FrameRate
    one(0xc772),              // TStop
    one(0xc789),              // ReelName
    one(0xc7a1),              // CameraLabel
};

constexpr std::array kOfGps{
    TagRange{0x0000, 0x001f}, // GPSVersionID to GPSHPositioningError
};

constexpr std::array kOfInteroperability{
    TagRange{0x0001, 0x0002}, // InteroperabilityIndex, InteroperabilityVersion
};

template <typename Ranges>
bool contains(const Ranges& ranges, uint16_t tag)
{
    return std::ranges::any_of(
        ranges, [tag](const TagRange& range) { return tag >= range.first && tag <= range.last; });
}

} // namespace

bool MetadataTags::isCarried(std::string_view group, uint16_t tag)
{
    if (group == "Image") {
        return contains(kOfFirstDirectory, tag) || contains(kOfExposure, tag);
    }
    if (group == "Photo") {
        return contains(kOfExifDirectory, tag) || contains(kOfExposure, tag);
    }
    if (group == "GPSInfo") {
        return contains(kOfGps, tag);
    }
    return group == "Iop" && contains(kOfInteroperability, tag);
}
