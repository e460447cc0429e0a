#pragma once

#include "Bitmap.h"

#include <QImage>

/// Bitmaps and Qt's images. Any thread.
namespace BitmapImage
{

/// As Format_RGB888, sRGB encoded.
[[nodiscard]] QImage toImage(const Bitmap& bitmap);

/// 16 bits where the image has them; transparent places become white, as paper shows them. The
/// image's colour space is not looked at. Null for a null image.
[[nodiscard]] Bitmap fromImage(const QImage& image);

/// Turns the colours into those of sRGB where the image says that they are others.
void convertToSrgb(QImage& image);

} // namespace BitmapImage
