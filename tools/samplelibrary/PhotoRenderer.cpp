#include "PhotoRenderer.h"

#include "Camera.h"
#include "CameraTags.h"
#include "DngWriter.h"
#include "JpegRows.h"
#include "ShrunkPicture.h"

#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace
{

/// Long side of the preview that is embedded in a RAW photo, at most.
constexpr int kPreviewSide = 1500;
constexpr int kPreviewQuality = 85;
constexpr int kRenderedQuality = 90;

/// Linear light to 8 bits by the curve of sRGB (IEC 61966-2-1), from a table.
class ToneCurve final
{
public:
    ToneCurve()
    {
        for (size_t i = 0; i < kSteps; ++i) {
            const double linear = static_cast<double>(i) / (kSteps - 1);
            const double encoded =
                linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
            m_levels[i] = static_cast<quint8>(std::lround(encoded * 255.0));
        }
    }

    [[nodiscard]] quint8 level(float linear) const
    {
        // The steps are so fine that rounding them down is no loss.
        return m_levels[static_cast<size_t>(std::clamp(linear, 0.0F, 1.0F) * (kSteps - 1))];
    }

    [[nodiscard]] std::array<quint8, 3> levels(Colour light) const
    {
        return {level(light.red), level(light.green), level(light.blue)};
    }

private:
    static constexpr size_t kSteps = 16384;
    std::array<quint8, kSteps> m_levels{};
};

QSize uprightSize(QSize picture, Orientation orientation)
{
    return orientation == Orientation::Upright ? picture : picture.transposed();
}

/// Where a pixel of the upright picture lies on the sensor.
QPoint sensorPoint(QPoint upright, QSize picture, Orientation orientation)
{
    switch (orientation) {
    case Orientation::TurnClockwise:
        return {upright.y(), picture.height() - 1 - upright.x()};
    case Orientation::TurnAnticlockwise:
        return {picture.width() - 1 - upright.y(), upright.x()};
    case Orientation::Upright:
        break;
    }
    return upright;
}

/// The share of light behind the filter of that pixel: red and green in even rows, green and blue
/// in odd ones.
float behindFilter(Colour filtered, QPoint pixel)
{
    if (pixel.x() % 2 != pixel.y() % 2) {
        return filtered.green;
    }
    return pixel.y() % 2 == 0 ? filtered.red : filtered.blue;
}

/// Draws the upright picture row by row: `pixel(x, y, light)` for each, `rowDone()` after a row.
template <typename Pixel, typename RowDone>
void draw(const Shot& shot, QSize size, Pixel pixel, RowDone rowDone)
{
    const Framing framing =
        PhotoRenderer::framingOf(shot.picture, shot.facts.orientation, shot.seed);
    const auto scene = shot.scene(framing);
    for (int y = 0; y < size.height(); ++y) {
        const float sceneY = (static_cast<float>(y) + 0.5F) * framing.pixel;
        for (int x = 0; x < size.width(); ++x) {
            pixel(QPoint(x, y), scene->at((static_cast<float>(x) + 0.5F) * framing.pixel, sceneY));
        }
        rowDone();
    }
}

/// The small preview as the sensor's rows lie.
Result<QByteArray> sensorPreview(const ShrunkPicture& upright,
                                 QSize size,
                                 Orientation orientation,
                                 const ToneCurve& curve)
{
    std::vector<quint8> levels(static_cast<size_t>(size.width()) *
                               static_cast<size_t>(size.height()) * 3);
    const QSize uprightPixels = upright.size();
    for (int y = 0; y < uprightPixels.height(); ++y) {
        for (int x = 0; x < uprightPixels.width(); ++x) {
            const QPoint place = sensorPoint({x, y}, size, orientation);
            const auto pixel = curve.levels(upright.at(x, y));
            const auto at = static_cast<size_t>(place.y()) * static_cast<size_t>(size.width()) +
                            static_cast<size_t>(place.x());
            std::ranges::copy(pixel, levels.begin() + static_cast<std::ptrdiff_t>(at * 3));
        }
    }
    JpegRows jpeg(size, kPreviewQuality);
    const size_t rowLength = static_cast<size_t>(size.width()) * 3;
    for (size_t start = 0; start < levels.size(); start += rowLength) {
        jpeg.addRow(std::span(levels).subspan(start, rowLength));
    }
    return jpeg.finish();
}

} // namespace

QSize PhotoRenderer::pictureSize(double megapixels, double aspect)
{
    const double height = std::sqrt(megapixels * 1e6 / aspect);
    const auto side = [](double pixels) {
        return std::max(16, static_cast<int>(std::lround(pixels / 4.0)) * 4);
    };
    return {side(height * aspect), side(height)};
}

Framing PhotoRenderer::framingOf(QSize picture, Orientation orientation, quint32 seed)
{
    const QSize size = uprightSize(picture, orientation);
    return {.aspect = static_cast<float>(size.width()) / static_cast<float>(size.height()),
            .pixel = 1.0F / static_cast<float>(size.height()),
            .seed = seed};
}

Result<PhotoRenderer::RawPhoto> PhotoRenderer::takeRaw(const Shot& shot)
{
    const Orientation orientation = shot.facts.orientation;
    const QSize size = uprightSize(shot.picture, orientation);
    const ToneCurve curve;
    const Exposure exposure(shot.facts.iso, shot.seed);
    DngWriter writer(shot.picture, shot.facts);
    JpegRows rendered(size, kRenderedQuality);
    const int longSide = std::max(size.width(), size.height());
    ShrunkPicture shrunk(size, (longSide + kPreviewSide - 1) / kPreviewSide);
    std::vector<quint8> row(static_cast<size_t>(size.width()) * 3);

    draw(
        shot,
        size,
        [&](QPoint upright, Colour light) {
            const QPoint pixel = sensorPoint(upright, shot.picture, orientation);
            const auto position =
                static_cast<quint32>(pixel.y()) * static_cast<quint32>(shot.picture.width()) +
                static_cast<quint32>(pixel.x());
            const float signal = behindFilter(Sensor::filtered(light), pixel);
            writer.setValue(pixel.x(), pixel.y(), exposure.valueOf(signal, position));
            shrunk.add(upright.x(), upright.y(), light);
            std::ranges::copy(curve.levels(light), row.begin() + std::ptrdiff_t{upright.x()} * 3);
        },
        [&] { rendered.addRow(row); });

    const QSize previewSize = uprightSize(shrunk.size(), orientation);
    const auto preview = sensorPreview(shrunk, previewSize, orientation, curve);
    const auto renderedFile = rendered.finish();
    if (!preview.ok()) {
        return preview.error();
    }
    if (!renderedFile.ok()) {
        return renderedFile.error();
    }
    return RawPhoto{writer.file(preview.value(), previewSize, exposure), renderedFile.value()};
}

Result<QByteArray> PhotoRenderer::takeJpeg(const Shot& shot)
{
    const QSize size = shot.picture;
    const ToneCurve curve;
    JpegRows jpeg(size, kRenderedQuality);
    jpeg.addApp1(CameraTags::exifSegment(shot.facts, size));
    jpeg.addApp1(CameraTags::xmpSegment(shot.facts));
    std::vector<quint8> row(static_cast<size_t>(size.width()) * 3);
    draw(
        shot,
        size,
        [&](QPoint pixel, Colour light) {
            std::ranges::copy(curve.levels(light), row.begin() + std::ptrdiff_t{pixel.x()} * 3);
        },
        [&] { jpeg.addRow(row); });
    return jpeg.finish();
}
