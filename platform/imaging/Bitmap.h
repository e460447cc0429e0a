#pragma once

#include <QSize>

#include <span>
#include <vector>

/// How stored values relate to light.
enum class Transfer : quint8 {
    Linear, ///< proportional to light, linear sRGB primaries
    Srgb,   ///< IEC 61966-2-1 encoded
};

/// A picture in memory: rows of interleaved R, G, B, 16 bits each (0..65535), top row first, sRGB
/// primaries. A value type; copying copies all pixels, so it is moved. Any one thread at a time.
class Bitmap final
{
public:
    Bitmap() = default;
    /// All pixels black. Sides in pixels, both positive.
    Bitmap(int pixelsWide, int pixelsHigh, Transfer transfer);

    [[nodiscard]] int pixelsWide() const { return m_width; }

    [[nodiscard]] int pixelsHigh() const { return m_height; }

    [[nodiscard]] QSize size() const { return {m_width, m_height}; }

    [[nodiscard]] Transfer transfer() const { return m_transfer; }

    [[nodiscard]] bool isNull() const { return m_width == 0; }

    /// 3 * pixelsWide() values of row `y`.
    [[nodiscard]] std::span<quint16> row(int y);
    [[nodiscard]] std::span<const quint16> row(int y) const;

private:
    int m_width{0};
    int m_height{0};
    Transfer m_transfer{Transfer::Srgb};
    std::vector<quint16> m_values;
};
