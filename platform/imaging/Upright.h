#pragma once

#include <QImage>

/// What an EXIF orientation (1..8, CIPA DC-008) does to a picture. Any thread.
namespace Upright
{

/// Whether showing the picture upright swaps its sides.
[[nodiscard]] bool isTransposed(int orientation);
/// Clockwise degrees of the turn, 0, 90, 180 or 270; a mirroring is not told.
[[nodiscard]] int rotation(int orientation);
/// The picture as it is to be shown. Null where memory is too short.
[[nodiscard]] QImage turned(const QImage& picture, int orientation);
/// The opposite: a picture that is shown upright, as its pixels would lie in a file of this
/// orientation. Null where memory is too short.
[[nodiscard]] QImage stored(const QImage& upright, int orientation);

} // namespace Upright
