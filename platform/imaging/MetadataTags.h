#pragma once

#include <cstdint>
#include <string_view>

/// Which Exif tags of an original are carried into a JPEG copy of it. Any thread.
namespace MetadataTags
{

/// Whether the tag is one that a JPEG may have and that tells of the photo or of how it was taken:
/// of TIFF 6.0, TIFF/EP, Exif 2.32 and 3.0 (CIPA DC-008, DC-X008), DNG 1.4 or CinemaDNG 1.1, or one
/// that programs and cameras put beside these: texts and ratings of Windows, titles of Panasonic's
/// cameras, Print Image Matching, ImageID and ProcessingSoftware. `group`: Exiv2's name of a
/// directory of the standard; of any other directory no tag is carried.
[[nodiscard]] bool isCarried(std::string_view group, uint16_t tag);

} // namespace MetadataTags
