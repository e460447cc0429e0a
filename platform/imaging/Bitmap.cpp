#include "Bitmap.h"

Bitmap::Bitmap(int pixelsWide, int pixelsHigh, Transfer transfer)
    : m_width(pixelsWide)
    , m_height(pixelsHigh)
    , m_transfer(transfer)
    , m_values(static_cast<std::size_t>(pixelsWide) * static_cast<std::size_t>(pixelsHigh) * 3)
{
    Q_ASSERT(pixelsWide > 0 && pixelsHigh > 0);
}

std::span<quint16> Bitmap::row(int y)
{
    Q_ASSERT(y >= 0 && y < m_height);
    const auto stride = static_cast<std::size_t>(m_width) * 3;
    return std::span(m_values).subspan(static_cast<std::size_t>(y) * stride, stride);
}

std::span<const quint16> Bitmap::row(int y) const
{
    Q_ASSERT(y >= 0 && y < m_height);
    const auto stride = static_cast<std::size_t>(m_width) * 3;
    return std::span(m_values).subspan(static_cast<std::size_t>(y) * stride, stride);
}
