#pragma once

#include "Result.h"

#include <QByteArrayView>

#include <optional>

/// The JPEG pictures of which the sensor data of a lossy DNG file are made (DNG 1.4, chapter 2,
/// "Compression"). LibRaw keeps what it gets of a damaged one and says nothing. Any thread.
namespace LossyTiles
{

/// What is wrong with the first of them that does not decode without complaint, or is wider or
/// higher than its place; nothing where all are right, and for files of any other kind. Those that
/// the picture's size does not need are left alone, so that the work is bounded by it. Errors as
/// JpegDecoder's; they name no file.
[[nodiscard]] std::optional<Error> failure(QByteArrayView file);

} // namespace LossyTiles
