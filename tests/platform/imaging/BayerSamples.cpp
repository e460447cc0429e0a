#include "BayerSamples.h"

#include <cmath>

namespace
{

/// Columns and rows around the picture.
constexpr int kMargin = 3;

} // namespace

BayerSamples::BayerSamples(const Bitmap& picture, const Phase& phase)
    : m_size(picture.size())
    , m_phase(phase)
    , m_values(static_cast<std::size_t>((m_size.width() + 2 * kMargin) *
                                        (m_size.height() + 2 * kMargin)),
               54321)
{
    for (int y = 0; y < m_size.height(); ++y) {
        for (int x = 0; x < m_size.width(); ++x) {
            const auto channel = m_phase.at(static_cast<std::size_t>(2 * (y % 2) + x % 2));
            const int place = (y + kMargin) * (m_size.width() + 2 * kMargin) + x + kMargin;
            m_values[static_cast<std::size_t>(place)] =
                picture.row(y)[3 * static_cast<std::size_t>(x) + channel];
        }
    }
}

Bitmap BayerSamples::flat(QSize size, std::array<quint16, 3> color)
{
    Bitmap bitmap(size.width(), size.height(), Transfer::Linear);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        const auto row = bitmap.row(y);
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = color.at(i % 3);
        }
    }
    return bitmap;
}

void BayerSamples::distort(const std::array<int, 4>& black, const std::array<float, 4>& gains)
{
    for (int y = 0; y < m_size.height(); ++y) {
        for (int x = 0; x < m_size.width(); ++x) {
            const auto filter = static_cast<std::size_t>(2 * (y % 2) + x % 2);
            const int place = (y + kMargin) * (m_size.width() + 2 * kMargin) + x + kMargin;
            quint16& value = m_values[static_cast<std::size_t>(place)];
            const float light = static_cast<float>(value) * gains.at(filter);
            value = static_cast<quint16>(static_cast<int>(std::lround(light)) + black.at(filter));
        }
    }
    for (std::size_t filter = 0; filter < m_black.size(); ++filter) {
        m_black.at(filter) = static_cast<float>(black.at(filter));
        m_scale.at(filter) = 1.0F / gains.at(filter);
    }
}

BayerMosaic BayerSamples::mosaic() const
{
    const int stride = m_size.width() + 2 * kMargin;
    BayerMosaic mosaic;
    mosaic.values = m_values.data() + std::ptrdiff_t{kMargin} * stride + kMargin;
    mosaic.stride = stride;
    mosaic.visible = m_size;
    mosaic.kept = QRect(QPoint(0, 0), m_size);
    mosaic.colors = m_phase;
    mosaic.black = m_black;
    mosaic.scale = m_scale;
    return mosaic;
}
