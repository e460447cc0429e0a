#pragma once

#include "Bitmap.h"
#include "ImageProperties.h"
#include "Result.h"

#include <QByteArray>
#include <QImage>

/// Encodes JPEG files in memory with libjpeg-turbo. Any thread.
namespace JpegDestination
{

/// `quality` 0..1 maps to libjpeg's 0..100 (rounded); below 0.9 chroma is subsampled 4:2:0, from
/// there 4:4:4. Optimised Huffman tables, progressive scans, sRGB ICC profile embedded. The picture
/// is sRGB encoded, Format_RGB888.
/// The metadata is written with what no longer holds made true: pixel dimensions, colour space,
/// a new thumbnail; strip offsets, RAW dimensions, sub-images and other structure tags are left
/// out; the orientation stays. Exif larger than a segment holds is trimmed from its least useful
/// end (the thumbnail, then maker notes, …) and the system log says so.
/// Errors: Internal, OutOfSpace.
[[nodiscard]] Result<QByteArray>
encode(const QImage& picture, const ImageProperties& properties, double quality);

/// The same of a picture that is rounded to 8 bits first.
[[nodiscard]] Result<QByteArray>
encode(const Bitmap& bitmap, const ImageProperties& properties, double quality);

/// A small JPEG (baseline, 4:2:0, sRGB, quality 0..1) without metadata but its size, for
/// thumbnails.
[[nodiscard]] Result<QByteArray> encodePlain(const QImage& picture, double quality);
[[nodiscard]] Result<QByteArray> encodePlain(const Bitmap& bitmap, double quality);

} // namespace JpegDestination
