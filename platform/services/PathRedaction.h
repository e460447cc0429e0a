#pragma once

#include <cstddef>
#include <span>
#include <string_view>

/// Takes the names of files and folders out of a text that somebody else is to read.
namespace PathRedaction
{

/// Writes `text` to `buffer` on one line, with "<path>" in place of everything that may be a path,
/// and returns how many bytes it wrote; what does not fit is left out, and never half a character
/// of UTF-8. A path is known by its slash and begins after the last blank, quote or bracket before
/// it, in an open quotation with the quotation. Names may hold blanks, quotes and line ends, so
/// nothing but the last quote of the kind that stands before a path ends it, and where none stands
/// before it the text ends with it. Control characters become blanks. Allocates nothing. Any
/// thread.
[[nodiscard]] std::size_t copyWithoutPaths(std::string_view text, std::span<char> buffer) noexcept;

} // namespace PathRedaction
