#pragma once

#include "Shot.h"
#include "TiffTags.h"

#include <QByteArray>
#include <QSize>

/// The metadata that the simulated camera writes (Exif 2.31, XMP). Any thread.
namespace CameraTags
{

/// Sets maker, model, orientation, resolution, time and description in the first directory.
void addMain(TiffTags& directory, const ShotFacts& facts);
/// The Exif directory; `picture` is the size that it states.
[[nodiscard]] TiffTags exif(const ShotFacts& facts, QSize picture);
/// The GPS directory, to a hundredth of a second of arc, a thousandth of that in the file.
[[nodiscard]] TiffTags gps(const Place& place, const QDateTime& taken);

/// The bodies of APP1 segments of a JPEG file. The XMP one is empty where there are neither
/// keywords nor a description.
[[nodiscard]] QByteArray exifSegment(const ShotFacts& facts, QSize picture);
[[nodiscard]] QByteArray xmpSegment(const ShotFacts& facts);

inline constexpr const char* kMake = "Corvane";
inline constexpr const char* kModel = "Corvane Sample Camera";
inline constexpr const char* kSerialNumber = "000042";

/// Tags of the first directory that point to others (Exif 2.31, 4.6.3).
inline constexpr quint16 kExifPointer = 0x8769;
inline constexpr quint16 kGpsPointer = 0x8825;

} // namespace CameraTags
