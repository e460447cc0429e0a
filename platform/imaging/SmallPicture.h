#pragma once

#include "Bitmap.h"

#include <QImage>
#include <QRectF>

#include <vector>

/// The lightness of a picture, or another view of its colours, averaged down to at most 96 pixels a
/// side: enough to tell scenes apart, coarse enough to forget sharpening, noise and compression. A
/// value type.
class SmallPicture final
{
public:
    /// What the values are, from R, G, B of 0..1.
    enum class View : quint8 {
        Lightness,    ///< 0..1
        RedBlue,      ///< red less blue, -1..1
        GreenMagenta, ///< green less the mean of red and blue, -1..1
    };

    [[nodiscard]] static SmallPicture of(const Bitmap& bitmap, View view = View::Lightness);
    [[nodiscard]] static SmallPicture of(const QImage& image, View view = View::Lightness);

    [[nodiscard]] int width() const { return m_width; }

    [[nodiscard]] int height() const { return m_height; }

    [[nodiscard]] bool isNull() const { return m_width == 0; }

    /// Size of the picture that it was made from, in pixels.
    [[nodiscard]] QSize original() const { return m_original; }

    /// sRGB encoded, row by row.
    [[nodiscard]] const std::vector<float>& values() const { return m_values; }

    [[nodiscard]] float at(int x, int y) const
    {
        return m_values[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                        static_cast<std::size_t>(x)];
    }

    /// A quarter turn clockwise.
    [[nodiscard]] SmallPicture turned() const;
    /// Averaged down by area to `size`, or to its own where that is smaller.
    [[nodiscard]] SmallPicture averaged(QSize size) const;
    /// The part `area` (fractions 0..1 of the sides), sampled at `size` points.
    [[nodiscard]] SmallPicture sampled(const QRectF& area, QSize size) const;

    [[nodiscard]] double mean() const;
    [[nodiscard]] double deviation() const;
    /// Correlation of pixels with their right and lower neighbours, the smaller of the two; 0 for a
    /// flat picture.
    [[nodiscard]] double neighbourCorrelation() const;

private:
    SmallPicture(QSize size, QSize original);

    int m_width{0};
    int m_height{0};
    QSize m_original;
    std::vector<float> m_values;
};
