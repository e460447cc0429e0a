#pragma once

#include "Bitmap.h"
#include "Result.h"

#include <QByteArray>
#include <QImage>
#include <QList>

/// The proof of a finished JPEG before it may stand for a photo.
namespace JpegProof
{

/// Decodes `jpeg` again in full and checks that it is whole to the last row, of the size of
/// `encoded`, pixel for pixel close to it within what the quality allows, and not flat where
/// `encoded` is not. `references`: pictures that should show the same scene (the file's embedded
/// preview, the library's preview of the unedited photo), as the sensor's rows lie; one that does
/// not show the scene proves nothing and fails nothing, one that does must be alike within wide
/// bounds, in lightness and, unless it is in black and white, in colour. Any thread. Errors:
/// Damaged with what fell short.
[[nodiscard]] Result<void>
prove(const QByteArray& jpeg, const Bitmap& encoded, const QList<QImage>& references);

/// Decodes a JPEG file's bytes in full. Errors: Damaged (also for one that ends early).
[[nodiscard]] Result<Bitmap> decodeWhole(const QByteArray& jpeg);

} // namespace JpegProof
