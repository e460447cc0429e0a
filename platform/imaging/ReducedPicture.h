#pragma once

#include "Bitmap.h"

#include <QImage>

/// Pictures averaged down in linear light, for what is judged by colour and not by detail. Any
/// thread.
namespace ReducedPicture
{

inline constexpr int kLongestSide = 256;

/// How many pixels of a side are averaged into one: so many that the longest side of what is made
/// is at least `longestSide`, and below twice that, in pixels; smaller pictures keep their size.
[[nodiscard]] int blockSide(QSize size, int longestSide = kLongestSide);

/// Transfer::Linear. What whole blocks do not cover, less than one, is left out at both ends alike.
[[nodiscard]] Bitmap of(const Bitmap& bitmap, int longestSide = kLongestSide);
/// The same of an sRGB encoded picture. Null for a null image.
[[nodiscard]] Bitmap of(const QImage& image, int longestSide = kLongestSide);

} // namespace ReducedPicture
