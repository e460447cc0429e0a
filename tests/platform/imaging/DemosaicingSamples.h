#pragma once

#include "Bitmap.h"

#include <QByteArray>

/// What a demosaicing is measured by.
namespace Demosaicing
{

/// Light of a RAW file as LibRaw's pixel grouping finds it, Transfer::Linear.
[[nodiscard]] Bitmap byPixelGrouping(const QByteArray& raw);

/// Peak signal to noise of two pictures of one size, in decibels, without the rim.
[[nodiscard]] double closeness(const Bitmap& one, const Bitmap& other);

} // namespace Demosaicing
