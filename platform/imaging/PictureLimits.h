#pragma once

#include <QSize>

/// Bounds on what a file may claim, checked before memory is taken for it.
namespace PictureLimits
{

/// The longest side of a JPEG file that libjpeg reads and writes.
inline constexpr int kMaximumSide = 65500;

/// Pixels of a picture; the largest sensors have 151 million. 6 bytes a pixel are held.
inline constexpr qint64 kMaximumPixels = 256LL * 1024 * 1024;

[[nodiscard]] constexpr bool holds(qint64 width, qint64 height)
{
    return width >= 1 && height >= 1 && width <= kMaximumSide && height <= kMaximumSide &&
           width * height <= kMaximumPixels;
}

} // namespace PictureLimits
