#pragma once

#include "Colour.h"

#include <QSize>

#include <algorithm>
#include <vector>

/// A picture that becomes smaller by a whole factor while it is drawn: each pixel is the mean of a
/// square. Pixels beyond the last whole square are left out. Any one thread at a time.
class ShrunkPicture final
{
public:
    ShrunkPicture(QSize size, int factor)
        : m_size(std::max(1, size.width() / factor), std::max(1, size.height() / factor))
        , m_factor(factor)
        , m_sums(static_cast<size_t>(m_size.width()) * static_cast<size_t>(m_size.height()))
    {
    }

    [[nodiscard]] QSize size() const { return m_size; }

    /// Light beyond white counts as white: a preview clips before it is scaled.
    void add(int x, int y, Colour light)
    {
        const int column = x / m_factor;
        const int row = y / m_factor;
        if (column < m_size.width() && row < m_size.height()) {
            Colour& sum = m_sums[index(column, row)];
            sum = sum + Colour{limited(light.red), limited(light.green), limited(light.blue)};
        }
    }

    [[nodiscard]] Colour at(int x, int y) const
    {
        return m_sums[index(x, y)] * (1.0F / static_cast<float>(m_factor * m_factor));
    }

private:
    [[nodiscard]] static float limited(float value) { return std::clamp(value, 0.0F, 1.0F); }

    [[nodiscard]] size_t index(int x, int y) const
    {
        return static_cast<size_t>(y) * static_cast<size_t>(m_size.width()) +
               static_cast<size_t>(x);
    }

    QSize m_size;
    int m_factor;
    std::vector<Colour> m_sums;
};
