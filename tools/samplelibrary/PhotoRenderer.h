#pragma once

#include "Result.h"
#include "Shot.h"

#include <QByteArray>
#include <QSize>

/// Takes photos of scenes with the simulated camera. Any thread, several at once; the bytes
/// depend on the shot alone.
namespace PhotoRenderer
{

/// A RAW photo, and a rendering of it as a photo application would keep one.
struct RawPhoto {
    QByteArray dng;
    QByteArray preview; ///< JPEG, upright, full size
};

/// The size of a picture of so many megapixels: both sides multiples of 4, at least 16.
[[nodiscard]] QSize pictureSize(double megapixels, double aspect);

/// How a scene is to be drawn that fills a picture of `picture` sensor pixels.
[[nodiscard]] Framing framingOf(QSize picture, Orientation orientation, quint32 seed);

/// Errors: OutOfSpace (memory).
[[nodiscard]] Result<RawPhoto> takeRaw(const Shot& shot);
/// An upright JPEG photo (the shot's orientation is Upright) with metadata of its own. Errors:
/// OutOfSpace (memory).
[[nodiscard]] Result<QByteArray> takeJpeg(const Shot& shot);

} // namespace PhotoRenderer
