#include "HeifDecoder.h"

#include "BitmapImage.h"
#include "ColorProfile.h"
#include "HeifColors.h"
#include "PictureLimits.h"

#include <QtEndian>

#include <libheif/heif.h>

#include <algorithm>
#include <memory>
#include <new>

namespace
{

constexpr quint32 kFullScale = 65535;

struct ContextFree {
    void operator()(heif_context* context) const { heif_context_free(context); }
};

struct HandleRelease {
    void operator()(heif_image_handle* handle) const { heif_image_handle_release(handle); }
};

struct ImageRelease {
    void operator()(heif_image* image) const { heif_image_release(image); }
};

struct OptionsFree {
    void operator()(heif_decoding_options* options) const { heif_decoding_options_free(options); }
};

using Context = std::unique_ptr<heif_context, ContextFree>;
using Handle = std::unique_ptr<heif_image_handle, HandleRelease>;
using Image = std::unique_ptr<heif_image, ImageRelease>;
using Options = std::unique_ptr<heif_decoding_options, OptionsFree>;

Error errorOf(const heif_error& error)
{
    const QString text = QString::fromUtf8(error.message);
    switch (error.code) {
    case heif_error_Memory_allocation_error:
        return {ErrorCode::OutOfSpace, QStringLiteral("there is not enough memory to decode it")};
    case heif_error_Unsupported_filetype:
    case heif_error_Unsupported_feature:
        return {ErrorCode::Unsupported,
                QStringLiteral("it is no picture of a kind that can be decoded (%1)").arg(text)};
    default:
        return {ErrorCode::Damaged, QStringLiteral("its picture does not decode (%1)").arg(text)};
    }
}

/// A file that was opened, which the bytes must outlive.
struct HeifFile {
    Context context;
    Handle primary;
};

Result<HeifFile> open(const QByteArray& bytes)
{
    HeifFile file{.context = Context(heif_context_alloc()), .primary = nullptr};
    heif_error error = heif_context_read_from_memory_without_copy(
        file.context.get(), bytes.constData(), static_cast<std::size_t>(bytes.size()), nullptr);
    if (error.code != heif_error_Ok) {
        return errorOf(error);
    }
    heif_image_handle* handle = nullptr;
    error = heif_context_get_primary_image_handle(file.context.get(), &handle);
    file.primary.reset(handle);
    if (error.code != heif_error_Ok) {
        return errorOf(error);
    }
    return file;
}

/// How libheif lays out the rows that are asked of it.
struct Layout {
    bool deep{false}; ///< two bytes a value, little-endian
    bool alpha{false};
    bool premultiplied{false};

    [[nodiscard]] heif_chroma chroma() const
    {
        if (deep) {
            return alpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
        }
        return alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
    }
};

/// Turns libheif's rows into rows of 16 bits on white.
class HeifRows final
{
public:
    HeifRows(const Layout& layout, int bits)
        : m_layout(layout)
        , m_largest((quint32{1} << static_cast<unsigned>(bits)) - 1)
    {
    }

    void convert(const uint8_t* from, std::span<quint16> into) const
    {
        const std::size_t channels = m_layout.alpha ? 4 : 3;
        for (std::size_t i = 0, pixel = 0; i < into.size(); i += 3, pixel += channels) {
            const quint32 alpha = m_layout.alpha ? value(from, pixel + 3) : kFullScale;
            for (std::size_t channel = 0; channel < 3; ++channel) {
                into[i + channel] = onWhite(value(from, pixel + channel), alpha);
            }
        }
    }

private:
    [[nodiscard]] quint32 value(const uint8_t* from, std::size_t index) const
    {
        const quint32 stored =
            m_layout.deep ? qFromLittleEndian<quint16>(from + 2 * index) : from[index];
        return (std::min(stored, m_largest) * kFullScale + m_largest / 2) / m_largest;
    }

    [[nodiscard]] quint16 onWhite(quint32 value, quint32 alpha) const
    {
        const quint32 white = kFullScale - alpha;
        if (m_layout.premultiplied) {
            return static_cast<quint16>(std::min(value + white, kFullScale));
        }
        return static_cast<quint16>((value * alpha + kFullScale * white + kFullScale / 2) /
                                    kFullScale);
    }

    Layout m_layout;
    quint32 m_largest;
};

Bitmap bitmapOf(const heif_image& image, const Layout& layout)
{
    const int width = heif_image_get_width(&image, heif_channel_interleaved);
    const int height = heif_image_get_height(&image, heif_channel_interleaved);
    const int bits =
        layout.deep ? heif_image_get_bits_per_pixel_range(&image, heif_channel_interleaved) : 8;
    int stride = 0;
    const uint8_t* const plane =
        heif_image_get_plane_readonly(&image, heif_channel_interleaved, &stride);
    if (plane == nullptr || !PictureLimits::holds(width, height) || bits < 8 || bits > 16) {
        return {};
    }
    Bitmap bitmap(width, height, Transfer::Srgb);
    const HeifRows rows(layout, bits);
    for (int y = 0; y < height; ++y) {
        rows.convert(plane + static_cast<std::ptrdiff_t>(stride) * y, bitmap.row(y));
    }
    return bitmap;
}

Result<Bitmap> decodeAs(const heif_image_handle& handle, const Layout& layout)
{
    const Options options(heif_decoding_options_alloc());
    if (options == nullptr) {
        throw std::bad_alloc();
    }
    options->strict_decoding = 1;
    heif_image* rawImage = nullptr;
    const heif_error error =
        heif_decode_image(&handle, &rawImage, heif_colorspace_RGB, layout.chroma(), options.get());
    const Image image(rawImage);
    if (error.code != heif_error_Ok) {
        return errorOf(error);
    }
    heif_error warning{};
    if (heif_image_get_decoding_warnings(image.get(), 0, &warning, 1) > 0) {
        return Error{ErrorCode::Damaged, errorOf(warning).message};
    }
    Bitmap bitmap = bitmapOf(*image, layout);
    if (bitmap.isNull()) {
        return Error{ErrorCode::Damaged, QStringLiteral("its picture does not decode")};
    }
    return bitmap;
}

Result<Bitmap> decodeHandle(const heif_image_handle& handle, const QByteArray& icc)
{
    if (!PictureLimits::holds(heif_image_handle_get_width(&handle),
                              heif_image_handle_get_height(&handle))) {
        return Error{ErrorCode::Unsupported,
                     QStringLiteral("it says that its picture is too large")};
    }
    Layout layout{.deep = heif_image_handle_get_luma_bits_per_pixel(&handle) > 8,
                  .alpha = heif_image_handle_has_alpha_channel(&handle) != 0,
                  .premultiplied = heif_image_handle_is_premultiplied_alpha(&handle) != 0};
    Result<Bitmap> bitmap = decodeAs(handle, layout);
    if (!bitmap.ok() && layout.deep && bitmap.error().code == ErrorCode::Unsupported) {
        // Not every kind of picture has a way to more than 8 bits in libheif.
        layout.deep = false;
        bitmap = decodeAs(handle, layout);
    }
    if (bitmap.ok() && !icc.isEmpty()) {
        ColorProfile::convertToSrgb(bitmap.value(), icc);
    }
    return bitmap;
}

Result<Bitmap> decodePrimary(const HeifFile& file)
{
    const Result<QByteArray> icc = HeifColors::profileOf(*file.primary);
    return icc.ok() ? decodeHandle(*file.primary, icc.value()) : Result<Bitmap>(icc.error());
}

Handle thumbnailOf(const heif_image_handle& primary)
{
    heif_item_id item = 0;
    heif_image_handle* handle = nullptr;
    if (heif_image_handle_get_list_of_thumbnail_IDs(&primary, &item, 1) != 1 ||
        heif_image_handle_get_thumbnail(&primary, item, &handle).code != heif_error_Ok) {
        return nullptr;
    }
    return Handle(handle);
}

} // namespace

Result<Bitmap> HeifDecoder::decode(const QByteArray& bytes)
{
    try {
        const Result<HeifFile> file = open(bytes);
        return file.ok() ? decodePrimary(file.value()) : Result<Bitmap>(file.error());
    } catch (const std::bad_alloc&) {
        return Error{ErrorCode::OutOfSpace,
                     QStringLiteral("there is not enough memory to decode it")};
    }
}

std::optional<QImage> HeifDecoder::thumbnail(const QByteArray& bytes)
{
    try {
        const Result<HeifFile> file = open(bytes);
        const Handle handle = file.ok() ? thumbnailOf(*file.value().primary) : nullptr;
        if (handle == nullptr) {
            return std::nullopt;
        }
        Result<QByteArray> icc = HeifColors::profileOf(*handle);
        if (icc.ok() && icc.value().isEmpty()) {
            icc = HeifColors::profileOf(*file.value().primary);
        }
        const Result<Bitmap> bitmap =
            icc.ok() ? decodeHandle(*handle, icc.value()) : Result<Bitmap>(icc.error());
        return bitmap.ok() ? std::optional(BitmapImage::toImage(bitmap.value())) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

std::optional<QSize> HeifDecoder::size(const QByteArray& bytes)
{
    const Result<HeifFile> file = open(bytes);
    if (!file.ok()) {
        return std::nullopt;
    }
    const QSize size(heif_image_handle_get_width(file.value().primary.get()),
                     heif_image_handle_get_height(file.value().primary.get()));
    return size.isEmpty() ? std::nullopt : std::optional(size);
}
