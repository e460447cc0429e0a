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

/// Pixels that a byte of a file of sensor data or of a JPEG can stand for. Huffman's shortest codes
/// make one byte of 8 blocks of 64 flat grey pixels, half of this; noise leaves a real picture some
/// hundred times more bytes.
inline constexpr qint64 kMaximumPixelsOfByte = 1024;

/// The same of a PNG, whose compression (RFC 1951) makes 1032 bytes of one, each of 8 pixels.
inline constexpr qint64 kMaximumPixelsOfPngByte = qint64{8} * 1032;

/// Whether so many bytes can hold that picture at all.
[[nodiscard]] constexpr bool
isHeldBy(qint64 bytes, qint64 width, qint64 height, qint64 pixelsOfByte = kMaximumPixelsOfByte)
{
    return holds(width, height) && width * height / pixelsOfByte <= bytes;
}

} // namespace PictureLimits
