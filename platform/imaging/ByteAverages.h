#pragma once

#include <QImage>

/// Pictures of 8 bits averaged down as their values are. Any thread.
namespace ByteAverages
{

/// The largest square: its sums of bytes fit 16 bits.
inline constexpr int kMostSide = 16;

/// Each pixel is the mean of a square of `side` pixels, 1 to kMostSide, of `picture`
/// (Format_RGB888, not null); squares that its right and lower ends cut are filled by repeating its
/// last column and row, as JPEG encoders do. Null where memory is too short.
[[nodiscard]] QImage of(const QImage& picture, int side);

} // namespace ByteAverages
