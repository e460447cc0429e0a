#include "RawPhoto.h"

#include "JpegDecoder.h"
#include "PictureNoise.h"
#include "RawFile.h"
#include "ReducedPicture.h"
#include "Resampler.h"
#include "SensorBreaks.h"
#include "SensorGaps.h"

#include <new>
#include <utility>

namespace
{

Error memoryTooShort()
{
    return {ErrorCode::OutOfSpace, QStringLiteral("there is not enough memory to decode it")};
}

std::optional<Preview> previewOf(const libraw_thumbnail_t& thumbnail, int longestSide)
{
    const QByteArrayView data(thumbnail.thumb, static_cast<qsizetype>(thumbnail.tlength));
    if (thumbnail.tformat == LIBRAW_THUMBNAIL_JPEG) {
        const QSize size = JpegDecoder::size(data).value_or(QSize());
        const auto image =
            JpegDecoder::decodeReduced(data, JpegDecoder::denominatorFor(size, longestSide));
        return image.ok()
                   ? std::optional(Preview{image.value(), qint64{size.width()} * size.height()})
                   : std::nullopt;
    }
    const qint64 pixels = qint64{thumbnail.twidth} * thumbnail.theight;
    if (thumbnail.tformat != LIBRAW_THUMBNAIL_BITMAP || pixels == 0 || data.size() < 3 * pixels) {
        return std::nullopt;
    }
    const QImage view(reinterpret_cast<const uchar*>(data.data()),
                      thumbnail.twidth,
                      thumbnail.theight,
                      qsizetype{thumbnail.twidth} * 3,
                      QImage::Format_RGB888);
    return Preview{view.copy(), pixels};
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
        SensorFaults faults;
        if (const auto values = file->sensorValues()) {
            faults = {.hasGaps = SensorGaps::isFoundIn(*values),
                      .breaks = SensorBreaks::places(*values)};
        }
        Result<RawPhoto> photo = made(std::move(file));
        if (photo.ok()) {
            photo.value().m_faults = std::move(faults);
        }
        return photo;
    } catch (const std::bad_alloc&) {
        return memoryTooShort();
    }
}

/// Of a file whose sensor data were read.
Result<RawPhoto> RawPhoto::made(std::shared_ptr<RawFile> file)
{
    SensorColors colors = file->colors();
    if (const auto mosaic = file->mosaic()) {
        const auto& [red, green, blue] = mosaic->balance;
        colors.sensor = {.balance = {red, green, blue}, .white = mosaic->white / 65535.0};
        return RawPhoto(std::move(file), BayerRenderer(*mosaic, colors.toSrgb), colors);
    }
    Result<Bitmap> linear = file->processed();
    return linear.ok() ? Result<RawPhoto>(RawPhoto(std::move(linear).value(), colors))
                       : linear.error();
}

std::optional<Preview> RawPhoto::preview(const QByteArray& bytes, int longestSide)
{
    try {
        const auto file = std::make_unique<RawFile>(bytes);
        const libraw_thumbnail_t* const thumbnail = file->unpackPreview();
        return thumbnail != nullptr ? previewOf(*thumbnail, longestSide) : std::nullopt;
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
    return m_renderer
               ? PictureNoise::someRows(
                     size(), [&](int from, int end) { return m_renderer->linearRows(from, end); })
               : PictureNoise::someRows(m_linear);
}

/// Light of the rendition's matrix, at full size or at half.
Bitmap RawPhoto::light(const Rendition& rendition, bool halved) &&
{
    if (!m_renderer) {
        return transformed(std::move(m_linear), rendition.matrix());
    }
    const auto file = std::exchange(m_file, nullptr);
    const BayerRenderer renderer =
        rendition.balance() ? m_renderer->balanced(*rendition.balance()) : *m_renderer;
    return halved ? renderer.halved(rendition.matrix()) : renderer.linear(rendition.matrix());
}

Result<QImage> RawPhoto::rendered(const Rendition& rendition, QSize size) &&
{
    const QSize whole = this->size();
    if (m_renderer && size == whole) {
        return (rendition.balance() ? m_renderer->balanced(*rendition.balance()) : *m_renderer)
            .rendered(rendition);
    }
    const bool isSmall =
        m_renderer && 2 * size.width() <= whole.width() && 2 * size.height() <= whole.height();
    Bitmap picture = std::move(*this).light(rendition, isSmall);
    if (picture.size() != size) {
        Result<Bitmap> scaled = Resampler::scale(picture, size);
        if (!scaled.ok()) {
            return scaled.error();
        }
        picture = std::move(scaled).value();
    }
    QImage toned = rendition.toned(picture);
    return toned.isNull() ? Result<QImage>(memoryTooShort()) : Result<QImage>(std::move(toned));
}
