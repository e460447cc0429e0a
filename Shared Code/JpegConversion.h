#pragma once

#include "ImageProperties.h"
#include "ProvedJpeg.h"
#include "Result.h"

#include <QString>

class CorvaneDelegate;
class Photo;

/// Turns a photo's file into a JPEG with its metadata, of the size and quality that the
/// controller holds at that moment.
namespace JpegConversion
{

/// Converts `source`, a file of `photo`. The file's metadata goes into the JPEG; without a GPS
/// block of its own, in Exif or XMP, it gets the library's position (also 0, 0, unless the file's
/// metadata could not be read whole, which the system log tells), and keywords are left out, since
/// they reach the copy through the library. The result has been proved: decoded again, compared
/// with what was encoded and with the previews of the photo.
///
/// Thread: the scan's worker. Touches nothing on disk. Raises what the photo application raises.
/// Errors: the message is a sentence for a report; every failure is one of this photo alone,
/// memory that is too short for it included.
/// An encoder's failure is also written to the system log.
[[nodiscard]] Result<ProvedJpeg>
convert(const QString& source, Photo& photo, const CorvaneDelegate& delegate);

/// Signed degrees as unsigned ones with references: 0 and above is "N" and "E".
[[nodiscard]] GpsPosition gpsPosition(double latitude, double longitude);

} // namespace JpegConversion
