#include "HeifColors.h"

#include "ColorProfile.h"

#include <libheif/heif.h>

#include <memory>
#include <optional>

namespace
{

struct NclxFree {
    void operator()(heif_color_profile_nclx* nclx) const { heif_nclx_color_profile_free(nclx); }
};

using Nclx = std::unique_ptr<heif_color_profile_nclx, NclxFree>;

constexpr ColorProfile::Curve kBt709{
    .gamma = 1.0 / 0.45, .a = 1.0 / 1.099, .b = 0.099 / 1.099, .c = 1.0 / 4.5, .d = 0.081};
constexpr ColorProfile::Curve kSmpte240{
    .gamma = 1.0 / 0.45, .a = 1.0 / 1.1115, .b = 0.1115 / 1.1115, .c = 0.25, .d = 0.0912};

/// The curves that colour management can follow; nothing for the others.
std::optional<ColorProfile::Curve> curveOf(heif_transfer_characteristics transfer)
{
    switch (transfer) {
    case heif_transfer_characteristic_ITU_R_BT_709_5:
    case heif_transfer_characteristic_ITU_R_BT_601_6:
    case heif_transfer_characteristic_IEC_61966_2_4:
    case heif_transfer_characteristic_ITU_R_BT_1361:
    case heif_transfer_characteristic_ITU_R_BT_2020_2_10bit:
    case heif_transfer_characteristic_ITU_R_BT_2020_2_12bit:
        return kBt709;
    case heif_transfer_characteristic_ITU_R_BT_470_6_System_M:
        return ColorProfile::Curve{.gamma = 2.2};
    case heif_transfer_characteristic_ITU_R_BT_470_6_System_B_G:
        return ColorProfile::Curve{.gamma = 2.8};
    case heif_transfer_characteristic_SMPTE_240M:
        return kSmpte240;
    case heif_transfer_characteristic_linear:
        return ColorProfile::Curve{.gamma = 1.0};
    case heif_transfer_characteristic_unspecified:
    case heif_transfer_characteristic_IEC_61966_2_1:
        return ColorProfile::kSrgbCurve;
    default:
        return std::nullopt;
    }
}

Error unsupported(heif_transfer_characteristics transfer)
{
    switch (transfer) {
    case heif_transfer_characteristic_ITU_R_BT_2100_0_PQ:
        return {ErrorCode::Unsupported,
                QStringLiteral("it is a high dynamic range picture (PQ), which cannot be shown in "
                               "the colours of a JPEG")};
    case heif_transfer_characteristic_ITU_R_BT_2100_0_HLG:
        return {ErrorCode::Unsupported,
                QStringLiteral("it is a high dynamic range picture (HLG), which cannot be shown in "
                               "the colours of a JPEG")};
    default:
        return {ErrorCode::Unsupported,
                QStringLiteral("its tone curve (number %1) is not known")
                    .arg(static_cast<int>(transfer))};
    }
}

ColorProfile::Primaries primariesOf(const heif_color_profile_nclx& nclx)
{
    const auto point = [](float x, float y) {
        return ColorProfile::Chromaticity{.x = double{x}, .y = double{y}};
    };
    return {.red = point(nclx.color_primary_red_x, nclx.color_primary_red_y),
            .green = point(nclx.color_primary_green_x, nclx.color_primary_green_y),
            .blue = point(nclx.color_primary_blue_x, nclx.color_primary_blue_y),
            .white = point(nclx.color_primary_white_x, nclx.color_primary_white_y)};
}

bool isOfSrgb(heif_color_primaries primaries)
{
    return primaries == heif_color_primaries_ITU_R_BT_709_5 ||
           primaries == heif_color_primaries_unspecified;
}

QByteArray embeddedProfile(const heif_image_handle& handle)
{
    const auto size = heif_image_handle_get_raw_color_profile_size(&handle);
    QByteArray icc(static_cast<qsizetype>(size), '\0');
    if (size == 0 || heif_image_handle_get_raw_color_profile(&handle, icc.data()).code != 0) {
        return {};
    }
    return icc;
}

} // namespace

Result<QByteArray> HeifColors::profileOf(const heif_image_handle& handle)
{
    const QByteArray icc = embeddedProfile(handle);
    if (!icc.isEmpty()) {
        return icc;
    }
    heif_color_profile_nclx* raw = nullptr;
    const heif_error error = heif_image_handle_get_nclx_color_profile(&handle, &raw);
    const Nclx nclx(raw);
    if (error.code != heif_error_Ok || nclx == nullptr) {
        return QByteArray();
    }
    const auto curve = curveOf(nclx->transfer_characteristics);
    if (!curve) {
        return unsupported(nclx->transfer_characteristics);
    }
    if (isOfSrgb(nclx->color_primaries)) {
        return *curve == ColorProfile::kSrgbCurve
                   ? QByteArray()
                   : ColorProfile::made(ColorProfile::kSrgbPrimaries, *curve);
    }
    const QByteArray made = ColorProfile::made(primariesOf(*nclx), *curve);
    if (made.isEmpty()) {
        return Error{ErrorCode::Unsupported,
                     QStringLiteral("its colours (number %1) are not known")
                         .arg(static_cast<int>(nclx->color_primaries))};
    }
    return made;
}
