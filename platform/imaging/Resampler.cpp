#include "Resampler.h"

#include "SrgbTransfer.h"

#include <zimg.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace
{

struct GraphFree {
    void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
};

struct MemoryFree {
    void operator()(void* memory) const { std::free(memory); } // NOLINT(*-no-malloc)
};

using Graph = std::unique_ptr<zimg_filter_graph, GraphFree>;
using Memory = std::unique_ptr<void, MemoryFree>;

// zimg wants rows and scratch memory aligned for its widest registers.
constexpr std::size_t kAlignment = 64;

constexpr std::size_t aligned(std::size_t bytes)
{
    return (bytes + kAlignment - 1) / kAlignment * kAlignment;
}

/// One colour plane of 16-bit values with aligned rows.
struct Plane {
    explicit Plane(QSize size)
        : stride(aligned(static_cast<std::size_t>(size.width()) * sizeof(quint16)))
        , memory(std::aligned_alloc(kAlignment, stride * static_cast<std::size_t>(size.height())))
    {
        if (memory == nullptr) {
            throw std::bad_alloc();
        }
    }

    [[nodiscard]] quint16* row(int y) const
    {
        auto* const start = static_cast<std::byte*>(memory.get());
        return reinterpret_cast<quint16*>(start + stride * static_cast<std::size_t>(y));
    }

    std::size_t stride;
    Memory memory;
};

Error zimgError()
{
    std::array<char, 256> text{};
    zimg_get_last_error(text.data(), text.size());
    return {ErrorCode::Internal,
            QStringLiteral("the picture could not be scaled: %1")
                .arg(QString::fromLatin1(text.data()))};
}

zimg_image_format greyFormat(QSize size)
{
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = static_cast<unsigned>(size.width());
    format.height = static_cast<unsigned>(size.height());
    format.pixel_type = ZIMG_PIXEL_WORD;
    format.color_family = ZIMG_COLOR_GREY;
    format.depth = 16;
    format.pixel_range = ZIMG_RANGE_FULL;
    return format;
}

Graph makeGraph(QSize from, QSize into)
{
    const auto source = greyFormat(from);
    const auto target = greyFormat(into);
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    parameters.resample_filter = ZIMG_RESIZE_LANCZOS;
    parameters.filter_param_a = 3.0;
    return Graph(zimg_filter_graph_build(&source, &target, &parameters));
}

void splitPlane(const Bitmap& bitmap, std::size_t channel, const Plane& plane)
{
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto from = bitmap.row(y);
        quint16* into = plane.row(y);
        for (std::size_t i = channel; i < from.size(); i += 3) {
            *into++ = from[i];
        }
    }
}

void joinPlane(const Plane& plane, std::size_t channel, Bitmap& bitmap)
{
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto into = bitmap.row(y);
        const quint16* from = plane.row(y);
        for (std::size_t i = channel; i < into.size(); i += 3) {
            into[i] = *from++;
        }
    }
}

bool runGraph(const zimg_filter_graph& graph, const Plane& from, const Plane& into, void* scratch)
{
    zimg_image_buffer_const source{};
    source.version = ZIMG_API_VERSION;
    source.plane[0] = {from.memory.get(), static_cast<ptrdiff_t>(from.stride), ZIMG_BUFFER_MAX};
    zimg_image_buffer target{};
    target.version = ZIMG_API_VERSION;
    target.plane[0] = {into.memory.get(), static_cast<ptrdiff_t>(into.stride), ZIMG_BUFFER_MAX};
    return zimg_filter_graph_process(
               &graph, &source, &target, scratch, nullptr, nullptr, nullptr, nullptr) ==
           ZIMG_ERROR_SUCCESS;
}

Result<Bitmap> scaleLinear(const Bitmap& bitmap, QSize size)
{
    const Graph graph = makeGraph(bitmap.size(), size);
    std::size_t scratchBytes = 0;
    if (graph == nullptr ||
        zimg_filter_graph_get_tmp_size(graph.get(), &scratchBytes) != ZIMG_ERROR_SUCCESS) {
        return zimgError();
    }
    const Memory scratch(std::aligned_alloc(kAlignment, aligned(scratchBytes + 1)));
    if (scratch == nullptr) {
        throw std::bad_alloc();
    }
    const Plane from(bitmap.size());
    const Plane into(size);
    Bitmap result(size.width(), size.height(), Transfer::Linear);
    // Plane by plane, so that no more than one is held beside the pictures.
    for (std::size_t channel = 0; channel < 3; ++channel) {
        splitPlane(bitmap, channel, from);
        if (!runGraph(*graph, from, into, scratch.get())) {
            return zimgError();
        }
        joinPlane(into, channel, result);
    }
    return result;
}

} // namespace

Result<Bitmap> Resampler::scale(const Bitmap& bitmap, QSize size)
{
    if (bitmap.isNull() || size.width() < 1 || size.height() < 1) {
        return Error{ErrorCode::Internal,
                     QStringLiteral("a picture without pixels cannot be scaled")};
    }
    try {
        if (bitmap.size() == size) {
            return SrgbTransfer::converted(bitmap, Transfer::Linear);
        }
        if (bitmap.transfer() == Transfer::Linear) {
            return scaleLinear(bitmap, size);
        }
        return scaleLinear(SrgbTransfer::converted(bitmap, Transfer::Linear), size);
    } catch (const std::bad_alloc&) {
        return Error{ErrorCode::OutOfSpace,
                     QStringLiteral("memory is too short to scale the picture to %1 x %2 pixels")
                         .arg(size.width())
                         .arg(size.height())};
    }
}
