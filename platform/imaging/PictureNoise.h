#pragma once

#include "Bitmap.h"
#include "SmallPicture.h"

/// Tells values by chance, as after decoding corrupt data, from pictures. The noise of a dark
/// frame, of a high sensitivity and the stars of a night sky are none. Any thread.
namespace PictureNoise
{

/// Whether the pixels are unrelated to their neighbours. `small` is the picture averaged down,
/// `size` its own in pixels, `rows` some of its rows, spread over it.
[[nodiscard]] bool isNoise(const SmallPicture& small, QSize size, const Bitmap& rows);

/// Whether those of a sixteenth of the picture are, at least. `rows`: bands of kBandRows rows each,
/// from top to bottom.
[[nodiscard]] bool isNoiseInPlaces(const Bitmap& rows);

inline constexpr int kBandRows = 16;

} // namespace PictureNoise
