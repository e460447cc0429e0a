#pragma once

#include "Bitmap.h"
#include "SmallPicture.h"

#include <functional>

/// Tells values by chance, as after decoding corrupt data, from pictures. The noise of a dark
/// frame, of a high sensitivity and the stars of a night sky are none. Any thread.
namespace PictureNoise
{

/// Whether the pixels are unrelated to their neighbours. `small` is the picture averaged down,
/// `size` its own in pixels, `rows` some of its rows, spread over it.
[[nodiscard]] bool isNoise(const SmallPicture& small, QSize size, const Bitmap& rows);

/// Whether those of a sixteenth of the picture are, at least. `rows`: as someRows() gives them.
[[nodiscard]] bool isNoiseInPlaces(const Bitmap& rows);

/// Some hundred rows of a picture of `size`, in bands spread over it from top to bottom; of a low
/// one all. `rowsOf` gives the rows [from, end).
[[nodiscard]] Bitmap someRows(QSize size, const std::function<Bitmap(int from, int end)>& rowsOf);
[[nodiscard]] Bitmap someRows(const Bitmap& bitmap);

} // namespace PictureNoise
