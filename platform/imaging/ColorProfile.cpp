#include "ColorProfile.h"

#include <lcms2.h>

#include <array>
#include <memory>
#include <utility>
#include <vector>

namespace
{

struct ProfileClose {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};

using Profile = std::unique_ptr<void, ProfileClose>;

struct CurveFree {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};

using ProfileCurve = std::unique_ptr<cmsToneCurve, CurveFree>;

/// Bytes 24 to 35 of the header (ICC.1:2010, 7.2) hold when the profile was made; a fixed moment
/// keeps the bytes the same each time.
constexpr qsizetype kDateOffset = 24;

QByteArray savedBytes(void* profile)
{
    cmsUInt32Number size = 0;
    if (cmsSaveProfileToMem(profile, nullptr, &size) == 0) {
        return {};
    }
    QByteArray bytes(static_cast<qsizetype>(size), '\0');
    return cmsSaveProfileToMem(profile, bytes.data(), &size) == 0 ? QByteArray() : bytes;
}

QByteArray makeSrgb()
{
    const Profile profile(cmsCreate_sRGBProfile());
    cmsSetProfileVersion(profile.get(), 2.1);
    QByteArray bytes = savedBytes(profile.get());
    if (bytes.isEmpty()) {
        return {};
    }
    // 2000-01-01 00:00:00, six big-endian numbers of 16 bits.
    const auto kMoment = QByteArray::fromHex("07d000010001000000000000");
    bytes.replace(kDateOffset, kMoment.size(), kMoment);
    return bytes;
}

cmsUInt32Number typeOf(ColorProfile::Layout layout)
{
    switch (layout) {
    case ColorProfile::Layout::Grey16:
        return TYPE_GRAY_16;
    case ColorProfile::Layout::Cmyk16:
        return TYPE_CMYK_16;
    case ColorProfile::Layout::InvertedCmyk16:
        return TYPE_CMYK_16_REV;
    case ColorProfile::Layout::Rgb16:
        break;
    }
    return TYPE_RGB_16;
}

cmsColorSpaceSignature spaceOf(ColorProfile::Layout layout)
{
    switch (layout) {
    case ColorProfile::Layout::Grey16:
        return cmsSigGrayData;
    case ColorProfile::Layout::Cmyk16:
    case ColorProfile::Layout::InvertedCmyk16:
        return cmsSigCmykData;
    case ColorProfile::Layout::Rgb16:
        break;
    }
    return cmsSigRgbData;
}

std::size_t channelsOf(cmsUInt32Number type)
{
    return T_CHANNELS(type);
}

bool isGrey(const Bitmap& bitmap)
{
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto row = bitmap.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            if (row[i] != row[i + 1] || row[i] != row[i + 2]) {
                return false;
            }
        }
    }
    return true;
}

/// Of a picture whose channels are the same.
void convertGrey(Bitmap& bitmap, const ColorProfile::ToSrgb& conversion)
{
    std::vector<quint16> grey(static_cast<std::size_t>(bitmap.pixelsWide()));
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto row = bitmap.row(y);
        for (std::size_t x = 0; x < grey.size(); ++x) {
            grey[x] = row[3 * x];
        }
        conversion.convert(grey, row);
    }
}

} // namespace

QByteArray ColorProfile::made(const Primaries& primaries, const Curve& curve)
{
    const auto place = [](Chromaticity color) { return cmsCIExyY{color.x, color.y, 1.0}; };
    const auto isPlace = [](Chromaticity color) { return color.x > 0.0 && color.y > 0.0; };
    if (!isPlace(primaries.red) || !isPlace(primaries.green) || !isPlace(primaries.blue) ||
        !isPlace(primaries.white)) {
        return {};
    }
    // Type 4 (IEC 61966-2-1) of ICC.1:2010, 10.16.
    const std::array<double, 5> parameters{curve.gamma, curve.a, curve.b, curve.c, curve.d};
    const ProfileCurve tone(cmsBuildParametricToneCurve(nullptr, 4, parameters.data()));
    const std::array<cmsToneCurve*, 3> tones{tone.get(), tone.get(), tone.get()};
    const cmsCIExyY white = place(primaries.white);
    const cmsCIExyYTRIPLE colors{
        place(primaries.red), place(primaries.green), place(primaries.blue)};
    const Profile profile(tone == nullptr ? nullptr
                                          : cmsCreateRGBProfile(&white, &colors, tones.data()));
    return profile == nullptr ? QByteArray() : savedBytes(profile.get());
}

const QByteArray& ColorProfile::sRgb()
{
    static const QByteArray kBytes = makeSrgb();
    return kBytes;
}

const QByteArray& ColorProfile::adobeRgb()
{
    // Adobe RGB (1998) Color Image Encoding, 4.3.1.1 and 4.3.1.2.
    static const QByteArray kBytes = made({.red = {0.64, 0.33},
                                           .green = {0.21, 0.71},
                                           .blue = {0.15, 0.06},
                                           .white = {0.3127, 0.3290}},
                                          {.gamma = 563.0 / 256.0});
    return kBytes;
}

std::optional<ColorProfile::ToSrgb> ColorProfile::ToSrgb::create(const QByteArray& icc,
                                                                 Layout layout)
{
    const Profile source(
        cmsOpenProfileFromMem(icc.constData(), static_cast<cmsUInt32Number>(icc.size())));
    if (source == nullptr || cmsGetColorSpace(source.get()) != spaceOf(layout)) {
        return std::nullopt;
    }
    const Profile target(cmsCreate_sRGBProfile());
    // No cache: lcms2 keeps it inside the transform, and results must not depend on order.
    void* const transform = cmsCreateTransform(source.get(),
                                               typeOf(layout),
                                               target.get(),
                                               TYPE_RGB_16,
                                               INTENT_PERCEPTUAL,
                                               cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOCACHE);
    if (transform == nullptr) {
        return std::nullopt;
    }
    return ToSrgb(transform);
}

ColorProfile::ToSrgb::ToSrgb(ToSrgb&& other) noexcept
    : m_transform(std::exchange(other.m_transform, nullptr))
{
}

ColorProfile::ToSrgb& ColorProfile::ToSrgb::operator=(ToSrgb&& other) noexcept
{
    std::swap(m_transform, other.m_transform);
    return *this;
}

ColorProfile::ToSrgb::~ToSrgb()
{
    if (m_transform != nullptr) {
        cmsDeleteTransform(m_transform);
    }
}

void ColorProfile::ToSrgb::convert(std::span<const quint16> from, std::span<quint16> into) const
{
    const auto pixels = into.size() / 3;
    Q_ASSERT(from.size() >= pixels * channelsOf(cmsGetTransformInputFormat(m_transform)));
    cmsDoTransform(m_transform, from.data(), into.data(), static_cast<cmsUInt32Number>(pixels));
}

void ColorProfile::convertToSrgb(Bitmap& bitmap, const QByteArray& icc)
{
    Q_ASSERT(bitmap.isNull() || bitmap.transfer() == Transfer::Srgb);
    if (const auto conversion = ToSrgb::create(icc, Layout::Rgb16)) {
        for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
            const auto row = bitmap.row(y);
            conversion->convert(row, row);
        }
        return;
    }
    const auto conversion = ToSrgb::create(icc, Layout::Grey16);
    if (conversion && isGrey(bitmap)) {
        convertGrey(bitmap, *conversion);
    }
}
