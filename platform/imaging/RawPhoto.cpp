#include "RawPhoto.h"

#include "BitmapImage.h"
#include "JpegDecoder.h"
#include "RawFile.h"
#include "ReducedPicture.h"
#include "Resampler.h"

#include <algorithm>
#include <new>
#include <utility>

namespace
{

Error memoryTooShort()
{
    return {ErrorCode::OutOfSpace, QStringLiteral("there is not enough memory to decode it")};
}

std::optional<QImage> imageOf(const libraw_thumbnail_t& thumbnail)
{
    const QByteArrayView data(thumbnail.thumb, static_cast<qsizetype>(thumbnail.tlength));
    if (thumbnail.tformat == LIBRAW_THUMBNAIL_JPEG) {
        const auto bitmap = JpegDecoder::decode(data);
        return bitmap.ok() ? std::optional(BitmapImage::toImage(bitmap.value())) : std::nullopt;
    }
    const qsizetype needed = qsizetype{thumbnail.twidth} * thumbnail.theight * 3;
    if (thumbnail.tformat != LIBRAW_THUMBNAIL_BITMAP || needed == 0 || data.size() < needed) {
        return std::nullopt;
    }
    const QImage view(reinterpret_cast<const uchar*>(data.data()),
                      thumbnail.twidth,
                      thumbnail.theight,
                      qsizetype{thumbnail.twidth} * 3,
                      QImage::Format_RGB888);
    return view.copy();
}

} // namespace

RawPhoto::RawPhoto(std::shared_ptr<RawFile> file,
                   const BayerRenderer& renderer,
                   const SensorColors& colors)
    : m_file(std::move(file))
    , m_renderer(renderer)
    , m_reduced(renderer.reduced())
    , m_colors(colors)
{
}

RawPhoto::RawPhoto(Bitmap linear, const SensorColors& colors)
    : m_linear(std::move(linear))
    , m_reduced(ReducedPicture::of(m_linear))
    , m_colors(colors)
{
}

Result<RawPhoto> RawPhoto::open(const QByteArray& bytes)
{
    try {
        auto file = std::make_shared<RawFile>(bytes);
        if (const auto failure = file->unpackSensor()) {
            return *failure;
        }
        SensorColors colors = file->colors();
        if (const auto mosaic = file->mosaic()) {
            const auto& [red, green, blue] = mosaic->balance;
            colors.sensor = {.balance = {red, green, blue}, .white = mosaic->white / 65535.0};
            return RawPhoto(std::move(file), BayerRenderer(*mosaic, colors.toSrgb), colors);
        }
        Result<Bitmap> linear = file->processed();
        return linear.ok() ? Result<RawPhoto>(RawPhoto(std::move(linear).value(), colors))
                           : linear.error();
    } catch (const std::bad_alloc&) {
        return memoryTooShort();
    }
}

std::optional<QImage> RawPhoto::preview(const QByteArray& bytes)
{
    try {
        const auto file = std::make_unique<RawFile>(bytes);
        const libraw_thumbnail_t* const thumbnail = file->unpackPreview();
        return thumbnail != nullptr ? imageOf(*thumbnail) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

QSize RawPhoto::size() const
{
    return m_renderer ? m_renderer->size() : m_linear.size();
}

Bitmap RawPhoto::linear() const
{
    return m_renderer ? m_renderer->linear() : m_linear;
}

Bitmap RawPhoto::someRows() const
{
    constexpr int kBands = 16;
    constexpr int kRows = 16;
    const int height = size().height();
    if (!m_renderer || height <= kBands * kRows) {
        return linear();
    }
    Bitmap rows(size().width(), kBands * kRows, Transfer::Linear);
    for (int band = 0; band < kBands; ++band) {
        const int from = static_cast<int>(qint64{band} * (height - kRows) / (kBands - 1));
        const Bitmap part = m_renderer->linearRows(from, from + kRows);
        for (int y = 0; y < kRows; ++y) {
            std::ranges::copy(part.row(y), rows.row(band * kRows + y).begin());
        }
    }
    return rows;
}

Result<Bitmap> RawPhoto::rendered(const Rendition& rendition, QSize size) const
{
    if (!m_renderer) {
        Result<Bitmap> scaled =
            size == m_linear.size() ? Result<Bitmap>(m_linear) : Resampler::scale(m_linear, size);
        return scaled.ok() ? Result<Bitmap>(rendition.applied(std::move(scaled).value()))
                           : scaled.error();
    }
    const BayerRenderer renderer =
        rendition.balance() ? m_renderer->balanced(*rendition.balance()) : *m_renderer;
    const QSize whole = renderer.size();
    if (size == whole) {
        return renderer.rendered(rendition);
    }
    const bool isSmall = 2 * size.width() <= whole.width() && 2 * size.height() <= whole.height();
    const Bitmap light =
        isSmall ? renderer.halved(rendition.matrix()) : renderer.linear(rendition.matrix());
    if (light.size() == size) {
        return rendition.toned(light);
    }
    const Result<Bitmap> scaled = Resampler::scale(light, size);
    return scaled.ok() ? Result<Bitmap>(rendition.toned(scaled.value())) : scaled.error();
}
