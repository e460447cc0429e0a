#include "ColorProfile.h"

#include <lcms2.h>

#include <memory>
#include <utility>

namespace
{

struct ProfileClose {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};

using Profile = std::unique_ptr<void, ProfileClose>;

/// Bytes 24 to 35 of the header (ICC.1:2010, 7.2) hold when the profile was made; a fixed moment
/// keeps the bytes the same each time.
constexpr qsizetype kDateOffset = 24;

QByteArray makeSrgb()
{
    const Profile profile(cmsCreate_sRGBProfile());
    cmsSetProfileVersion(profile.get(), 2.1);
    cmsUInt32Number size = 0;
    if (cmsSaveProfileToMem(profile.get(), nullptr, &size) == 0) {
        return {};
    }
    QByteArray bytes(static_cast<qsizetype>(size), '\0');
    if (cmsSaveProfileToMem(profile.get(), bytes.data(), &size) == 0) {
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

} // namespace

const QByteArray& ColorProfile::sRgb()
{
    static const QByteArray kBytes = makeSrgb();
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
    const auto conversion = ToSrgb::create(icc, Layout::Rgb16);
    if (!conversion) {
        return;
    }
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto row = bitmap.row(y);
        conversion->convert(row, row);
    }
}
