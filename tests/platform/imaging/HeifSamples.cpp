#include "HeifSamples.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <libheif/heif.h>

#include <algorithm>
#include <memory>

namespace
{

constexpr heif_compression_format kFormat = heif_compression_HEVC;

template <auto release>
struct Release {
    template <typename Object>
    void operator()(Object* object) const
    {
        release(object);
    }
};

using Context = std::unique_ptr<heif_context, Release<heif_context_free>>;
using Encoder = std::unique_ptr<heif_encoder, Release<heif_encoder_release>>;
using Image = std::unique_ptr<heif_image, Release<heif_image_release>>;
using Handle = std::unique_ptr<heif_image_handle, Release<heif_image_handle_release>>;
using EncodingOptions = std::unique_ptr<heif_encoding_options, Release<heif_encoding_options_free>>;
using Nclx = std::unique_ptr<heif_color_profile_nclx, Release<heif_nclx_color_profile_free>>;

void expectOk(const heif_error& error)
{
    EXPECT_EQ(error.code, heif_error_Ok) << error.message;
}

heif_chroma chromaOf(const HeifSamples::Options& options)
{
    if (options.bits > 8) {
        return heif_chroma_interleaved_RRGGBB_LE;
    }
    return options.alpha < 0 ? heif_chroma_interleaved_RGB : heif_chroma_interleaved_RGBA;
}

Image imageOf(const Bitmap& bitmap, const HeifSamples::Options& options)
{
    heif_image* raw = nullptr;
    const int width = bitmap.pixelsWide();
    const int height = bitmap.pixelsHigh();
    expectOk(heif_image_create(width, height, heif_colorspace_RGB, chromaOf(options), &raw));
    Image image(raw);
    expectOk(heif_image_add_plane(raw, heif_channel_interleaved, width, height, options.bits));
    int stride = 0;
    uint8_t* const plane = heif_image_get_plane(raw, heif_channel_interleaved, &stride);
    for (int y = 0; y < height; ++y) {
        uint8_t* into = plane + static_cast<std::ptrdiff_t>(stride) * y;
        const auto row = bitmap.row(y);
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (options.bits > 8) {
                qToLittleEndian(static_cast<quint16>(row[i] >> (16 - options.bits)), into);
                into += 2;
            } else {
                *into++ = static_cast<uint8_t>(row[i] >> 8);
            }
            if (options.alpha >= 0 && i % 3 == 2) {
                *into++ = static_cast<uint8_t>(options.alpha);
            }
        }
    }
    return image;
}

Nclx nclxOf(const HeifSamples::Options& options)
{
    Nclx nclx(heif_nclx_color_profile_alloc());
    expectOk(heif_nclx_color_profile_set_color_primaries(nclx.get(),
                                                         static_cast<uint16_t>(options.primaries)));
    expectOk(heif_nclx_color_profile_set_transfer_characteristics(
        nclx.get(), static_cast<uint16_t>(options.transfer)));
    expectOk(heif_nclx_color_profile_set_matrix_coefficients(nclx.get(), 6));
    nclx->full_range_flag = 1;
    return nclx;
}

heif_error append(heif_context* /*context*/, const void* data, std::size_t size, void* bytes)
{
    static_cast<QByteArray*>(bytes)->append(static_cast<const char*>(data),
                                            static_cast<qsizetype>(size));
    return {heif_error_Ok, heif_suberror_Unspecified, ""};
}

} // namespace

QByteArray HeifSamples::file(const Bitmap& bitmap, const Options& options)
{
    const Context context(heif_context_alloc());
    heif_encoder* rawEncoder = nullptr;
    expectOk(heif_context_get_encoder_for_format(context.get(), kFormat, &rawEncoder));
    const Encoder encoder(rawEncoder);
    expectOk(heif_encoder_set_lossy_quality(encoder.get(), 98));
    const bool full = options.alpha < 0 && options.bits == 8;
    static_cast<void>(heif_encoder_set_parameter(encoder.get(), "chroma", full ? "444" : "420"));
    const Image image = imageOf(bitmap, options);
    if (!options.icc.isEmpty()) {
        expectOk(heif_image_set_raw_color_profile(image.get(),
                                                  "prof",
                                                  options.icc.constData(),
                                                  static_cast<std::size_t>(options.icc.size())));
    }
    const EncodingOptions encoding(heif_encoding_options_alloc());
    encoding->image_orientation = static_cast<heif_orientation>(options.orientation);
    const Nclx nclx = options.primaries > 0 ? nclxOf(options) : nullptr;
    if (nclx != nullptr) {
        expectOk(heif_image_set_nclx_color_profile(image.get(), nclx.get()));
        encoding->output_nclx_profile = nclx.get();
        encoding->macOS_compatibility_workaround_no_nclx_profile = 0;
    }
    heif_image_handle* rawHandle = nullptr;
    expectOk(heif_context_encode_image(
        context.get(), image.get(), encoder.get(), encoding.get(), &rawHandle));
    const Handle handle(rawHandle);
    if (!options.thumbnail.isNull()) {
        const Image large = imageOf(options.thumbnail, options);
        const int side = std::max(options.thumbnail.pixelsWide(), options.thumbnail.pixelsHigh());
        heif_image_handle* rawThumbnail = nullptr;
        expectOk(heif_context_encode_thumbnail(context.get(),
                                               large.get(),
                                               handle.get(),
                                               encoder.get(),
                                               encoding.get(),
                                               side / 2,
                                               &rawThumbnail));
        const Handle thumbnail(rawThumbnail);
    }
    if (!options.exif.isEmpty()) {
        expectOk(heif_context_add_exif_metadata(context.get(),
                                                handle.get(),
                                                options.exif.constData(),
                                                static_cast<int>(options.exif.size())));
    }
    QByteArray bytes;
    heif_writer writer{.writer_api_version = 1, .write = append};
    expectOk(heif_context_write(context.get(), &writer, &bytes));
    return bytes;
}
