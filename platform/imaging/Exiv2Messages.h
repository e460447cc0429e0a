#pragma once

#include <string_view>

/// Exiv2 leaves out what it cannot read, and only says so. Any thread.
namespace Exiv2Messages
{

/// Whether a block was left out, or of Exif a directory or an entry of the standard's directories.
/// Of maker notes and of directories of other pictures nothing counts.
[[nodiscard]] bool tellsOfLoss(std::string_view message);

/// Whether a packet of XMP was refused.
[[nodiscard]] bool tellsOfRefusedXmp(std::string_view message);

} // namespace Exiv2Messages
