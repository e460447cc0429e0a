#include "ImagePropertiesContent.h"
#include "MetadataPruning.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace
{

/// Namespaces that speak of how a RAW file is to be developed, of data that lies beside the packet
/// in the original file, or of pictures within it.
constexpr std::array kUntrueNamespaces{
    std::string_view("http://ns.adobe.com/camera-raw-settings/1.0/"),
    std::string_view("http://ns.adobe.com/camera-raw-saved-settings/1.0/"),
    std::string_view("http://ns.adobe.com/dng/1.0/"),
    std::string_view("http://ns.adobe.com/xmp/note/"),
    std::string_view("http://ns.adobe.com/hdr-gain-map/1.0/"),
    std::string_view("http://ns.apple.com/HDRGainMap/1.0/"),
    std::string_view("http://ns.apple.com/pixeldatainfo/1.0/"),
    std::string_view("http://ns.google.com/photos/1.0/audio/"),
    std::string_view("http://ns.google.com/photos/1.0/container/"),
    std::string_view("http://ns.google.com/photos/1.0/image/"),
    std::string_view("http://ns.google.com/photos/1.0/depthmap/"),
};

/// Begin of the namespaces of Dynamic Depth, which tell of data beside the packet as well.
constexpr std::string_view kDynamicDepth("http://ns.google.com/photos/dd/");

/// Properties of the original's own picture, or of pictures within the packet. A digest says that a
/// block is as its writer left it, which it is not any more.
constexpr std::array kUntrueProperties{
    std::string_view("Xmp.tiff.ImageWidth"),
    std::string_view("Xmp.tiff.ImageLength"),
    std::string_view("Xmp.tiff.BitsPerSample"),
    std::string_view("Xmp.tiff.Compression"),
    std::string_view("Xmp.tiff.PhotometricInterpretation"),
    std::string_view("Xmp.tiff.SamplesPerPixel"),
    std::string_view("Xmp.tiff.PlanarConfiguration"),
    std::string_view("Xmp.tiff.YCbCrSubSampling"),
    std::string_view("Xmp.tiff.YCbCrPositioning"),
    std::string_view("Xmp.tiff.YCbCrCoefficients"),
    std::string_view("Xmp.tiff.ReferenceBlackWhite"),
    std::string_view("Xmp.tiff.TransferFunction"),
    std::string_view("Xmp.tiff.WhitePoint"),
    std::string_view("Xmp.tiff.PrimaryChromaticities"),
    std::string_view("Xmp.tiff.NativeDigest"),
    std::string_view("Xmp.exif.NativeDigest"),
    std::string_view("Xmp.exif.CompressedBitsPerPixel"),
    std::string_view("Xmp.exif.ComponentsConfiguration"),
    std::string_view("Xmp.exif.CFAPattern"),
    std::string_view("Xmp.xmp.Thumbnails"),
    std::string_view("Xmp.exifEX.Gamma"),
    std::string_view("Xmp.exifEX.InteroperabilityIndex"),
    std::string_view("Xmp.photoshop.ColorMode"),
    std::string_view("Xmp.photoshop.ICCProfile"),
    std::string_view("Xmp.photoshop.LegacyIPTCDigest"),
    std::string_view("Xmp.GCamera.RelitInputImageData"),
    std::string_view("Xmp.GCamera.RelitInputImageMime"),
    std::string_view("Xmp.GCamera.MicroVideo"),
    std::string_view("Xmp.GCamera.MicroVideoVersion"),
    std::string_view("Xmp.GCamera.MicroVideoOffset"),
    std::string_view("Xmp.GCamera.MotionPhoto"),
    std::string_view("Xmp.GCamera.MotionPhotoVersion"),
};

/// Properties in pixels of the original, untrue where the copy has another size.
constexpr std::array kPropertiesOfSize{
    std::string_view("Xmp.exif.SubjectArea"),
    std::string_view("Xmp.exif.SubjectLocation"),
    std::string_view("Xmp.exif.FocalPlaneXResolution"),
    std::string_view("Xmp.exif.FocalPlaneYResolution"),
    std::string_view("Xmp.exif.FocalPlaneResolutionUnit"),
    std::string_view("Xmp.GPano.CroppedAreaImageWidthPixels"),
    std::string_view("Xmp.GPano.CroppedAreaImageHeightPixels"),
    std::string_view("Xmp.GPano.CroppedAreaLeftPixels"),
    std::string_view("Xmp.GPano.CroppedAreaTopPixels"),
    std::string_view("Xmp.GPano.FullPanoWidthPixels"),
    std::string_view("Xmp.GPano.FullPanoHeightPixels"),
    std::string_view("Xmp.GPano.LargestValidInteriorRectLeft"),
    std::string_view("Xmp.GPano.LargestValidInteriorRectTop"),
    std::string_view("Xmp.GPano.LargestValidInteriorRectWidth"),
    std::string_view("Xmp.GPano.LargestValidInteriorRectHeight"),
};

template <typename List>
bool isPartOfAny(std::string_view key, const List& properties)
{
    return std::ranges::find(properties, MetadataData::propertyOf(key)) != properties.end();
}

bool isUntrue(const Exiv2::Xmpdatum& datum, bool isScaled)
{
    const std::string key = datum.key();
    if (isPartOfAny(key, kUntrueProperties) || (isScaled && isPartOfAny(key, kPropertiesOfSize))) {
        return true;
    }
    const std::string space = Exiv2::XmpProperties::ns(datum.groupName());
    return space.starts_with(kDynamicDepth) ||
           std::ranges::find(kUntrueNamespaces, space) != kUntrueNamespaces.end();
}

bool has(const Exiv2::XmpData& xmp, const char* key)
{
    return xmp.findKey(Exiv2::XmpKey(key)) != xmp.end();
}

void correct(Exiv2::XmpData& xmp, const char* key, const std::string& text)
{
    if (has(xmp, key)) {
        xmp[key] = text;
    }
}

} // namespace

namespace MetadataPruning
{

void makeXmpTrue(ImageProperties::Content& content, QSize pixels)
{
    Exiv2::XmpData& xmp = content.xmp;
    const bool isScaled = !hasScaleOfOriginal(content, pixels);
    MetadataData::eraseWhere(
        xmp, [isScaled](const Exiv2::Xmpdatum& datum) { return isUntrue(datum, isScaled); });
    correct(xmp, "Xmp.exif.PixelXDimension", std::to_string(pixels.width()));
    correct(xmp, "Xmp.exif.PixelYDimension", std::to_string(pixels.height()));
    correct(xmp, "Xmp.exif.ColorSpace", "1");
    correct(xmp, "Xmp.dc.format", "image/jpeg");
}

} // namespace MetadataPruning
