#pragma once

#include "BayerMosaic.h"
#include "Bitmap.h"
#include "Rendition.h"

#include <QImage>

#include <array>

/// Makes pictures of sensor data in one pass over their rows, without a picture in between. Light
/// above white is clipped before anything else, so that it stays white. Any thread, several at
/// once; on all cores, and the pixels do not depend on their number.
///
/// Colours between the filters: green along the direction of the smaller gradient with the other
/// colour's Laplacian as correction (J. F. Hamilton and J. E. Adams, US patent 5629734, 1997), the
/// two directions weighted by each other's squared gradient instead of chosen, and kept between the
/// neighbours; then red and blue by their differences to green, at each other's places along the
/// diagonals by the gradients there.
class BayerRenderer final
{
public:
    /// The mosaic must be valid. `toSrgb`: from the sensor's colours to linear sRGB.
    BayerRenderer(const BayerMosaic& mosaic, const ColorMatrix& toSrgb);

    /// All cores by default.
    void setThreads(int threads) { m_threads = threads; }

    /// The same sensor with other gains of red, green and blue, the least of them 1.
    [[nodiscard]] BayerRenderer balanced(const std::array<double, 3>& gains) const;

    [[nodiscard]] QSize size() const { return m_mosaic.kept.size(); }

    /// Each pixel of the four of a cell, so half as many a side, rounded down.
    [[nodiscard]] QSize halfSize() const { return size() / 2; }

    /// sRGB encoded, at full size, Format_RGB888.
    [[nodiscard]] QImage rendered(const Rendition& rendition) const;

    /// Transfer::Linear, at full size; `matrix` after the one to linear sRGB.
    [[nodiscard]] Bitmap linear(const ColorMatrix& matrix = kIdentityMatrix) const;

    /// The rows [from, end) of linear().
    [[nodiscard]] Bitmap linearRows(int from, int end) const;

    /// Transfer::Linear, at half size.
    [[nodiscard]] Bitmap halved(const ColorMatrix& matrix = kIdentityMatrix) const;

    /// Transfer::Linear in the sensor's own colours, unbalanced, cells averaged down to the size of
    /// ReducedPicture.
    [[nodiscard]] Bitmap reduced() const;

private:
    [[nodiscard]] ColorMatrix total(const ColorMatrix& matrix) const;

    BayerMosaic m_mosaic;
    ColorMatrix m_toSrgb;
    int m_threads{0};
};
