#pragma once

#include "Result.h"

#include <QByteArray>
#include <QImage>
#include <QList>

/// The proof of a finished JPEG before it may stand for a photo.
namespace JpegProof
{

/// What a photo's file holds.
enum class Source : quint8 {
    Sensor,   ///< values from which this program made the picture
    Finished, ///< a picture, which a program may have changed since its references were made
};

/// Decodes `jpeg` again, all its data, and checks that it is whole to the last row, of the size of
/// `encoded` (Format_RGB888), in each block of 8 x 8 pixels on the mean as light as that within
/// what the quality allows, not drifted in colour, and not flat where `encoded` is not. Where it is
/// large enough the blocks' means are all that is made of the decoded data.
///
/// `references`: pictures that should show the same scene (the file's embedded preview, the
/// library's preview of the unedited photo), as the sensor's rows lie; one that does not show the
/// scene proves nothing and fails nothing, one that does must be alike within wide bounds, in
/// lightness and, unless it is in black and white, in colour; a finished picture may itself be in
/// black and white. Any thread. Errors: Damaged with what fell short, Internal where the bytes hold
/// another picture than `encoded`, OutOfSpace.
[[nodiscard]] Result<void> prove(const QByteArray& jpeg,
                                 const QImage& encoded,
                                 const QList<QImage>& references,
                                 Source source);

} // namespace JpegProof
