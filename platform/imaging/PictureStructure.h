#pragma once

#include "FileBytes.h"

#include <optional>

/// Whether PNG, WebP, BMP, GIF and TGA files are whole, by what they say of their own length. Qt
/// shows what is there of some of them, and the rest in one colour. Any thread.
namespace PictureStructure
{

/// A clause that says what is missing; nothing for a file that is whole. What has none of the
/// others' marks is taken for TGA, which has none.
[[nodiscard]] std::optional<QString> complaint(const FileBytes& file);

} // namespace PictureStructure
