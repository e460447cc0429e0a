#include "HeifDecoder.h"

#include "ColorProfile.h"
#include "PictureLimits.h"
#include "SrgbTransfer.h"

#include <libheif/heif.h>

#include <memory>
#include <new>

namespace
{

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

QByteArray profileOf(const heif_image_handle& handle)
{
    const auto size = heif_image_handle_get_raw_color_profile_size(&handle);
    QByteArray icc(static_cast<qsizetype>(size), '\0');
    if (size == 0 || heif_image_handle_get_raw_color_profile(&handle, icc.data()).code != 0) {
        return {};
    }
    return icc;
}

Bitmap bitmapOf(const heif_image& image)
{
    const int width = heif_image_get_width(&image, heif_channel_interleaved);
    const int height = heif_image_get_height(&image, heif_channel_interleaved);
    int stride = 0;
    const uint8_t* const plane =
        heif_image_get_plane_readonly(&image, heif_channel_interleaved, &stride);
    if (plane == nullptr || !PictureLimits::holds(width, height)) {
        return {};
    }
    Bitmap bitmap(width, height, Transfer::Srgb);
    for (int y = 0; y < height; ++y) {
        const uint8_t* from = plane + static_cast<std::ptrdiff_t>(stride) * y;
        for (quint16& value : bitmap.row(y)) {
            value = widened(*from++);
        }
    }
    return bitmap;
}

Result<Bitmap> decodePrimary(heif_context& context)
{
    heif_image_handle* rawHandle = nullptr;
    heif_error error = heif_context_get_primary_image_handle(&context, &rawHandle);
    const Handle handle(rawHandle);
    if (error.code != heif_error_Ok) {
        return errorOf(error);
    }
    if (!PictureLimits::holds(heif_image_handle_get_width(handle.get()),
                              heif_image_handle_get_height(handle.get()))) {
        return Error{ErrorCode::Unsupported,
                     QStringLiteral("it says that its picture is too large")};
    }
    const Options options(heif_decoding_options_alloc());
    options->ignore_transformations = 1;
    heif_image* rawImage = nullptr;
    error = heif_decode_image(
        handle.get(), &rawImage, heif_colorspace_RGB, heif_chroma_interleaved_RGB, options.get());
    const Image image(rawImage);
    if (error.code != heif_error_Ok) {
        return errorOf(error);
    }
    Bitmap bitmap = bitmapOf(*image);
    if (bitmap.isNull()) {
        return Error{ErrorCode::Damaged, QStringLiteral("its picture does not decode")};
    }
    ColorProfile::convertToSrgb(bitmap, profileOf(*handle));
    return bitmap;
}

} // namespace

Result<Bitmap> HeifDecoder::decode(const QByteArray& bytes)
{
    try {
        const Context context(heif_context_alloc());
        const heif_error error = heif_context_read_from_memory_without_copy(
            context.get(), bytes.constData(), static_cast<std::size_t>(bytes.size()), nullptr);
        if (error.code != heif_error_Ok) {
            return errorOf(error);
        }
        return decodePrimary(*context);
    } catch (const std::bad_alloc&) {
        return Error{ErrorCode::OutOfSpace,
                     QStringLiteral("there is not enough memory to decode it")};
    }
}
