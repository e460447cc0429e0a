#pragma once

#include "Bitmap.h"

#include <QByteArray>

/// What a demosaicing is measured by.
namespace Demosaicing
{

/// LibRaw's interpolations, with its numbers.
enum class Interpolation : quint8 { Bilinear = 0, PixelGrouping = 2, Homogeneity = 3 };

/// Light of a RAW file as LibRaw finds it: Transfer::Linear, balanced, in the sensor's own colours.
[[nodiscard]] Bitmap byLibRaw(const QByteArray& raw, Interpolation interpolation);

/// Peak signal to noise of two pictures of one size, in decibels, without the rim.
[[nodiscard]] double closeness(const Bitmap& one, const Bitmap& other);

} // namespace Demosaicing
