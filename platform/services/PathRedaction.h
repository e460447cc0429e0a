#pragma once

#include <cstddef>
#include <span>
#include <string_view>

/// Takes the names of files, folders, photos and albums out of a text that somebody else is to
/// read.
namespace PathRedaction
{

/// Writes `text` to `buffer` on one line and returns how many bytes it wrote; what does not fit is
/// left out, and never half a character of UTF-8. Control characters become blanks.
///
/// "<text>" stands for what was in quotes (', ", ` and the typographic ones) or in square brackets:
/// names are quoted. A quotation begins with a quote anywhere; only ', ` and ’ begin none right
/// after a letter or digit, where they are apostrophes. As names may hold quotes it ends with the
/// last one of its kind in the text that a word can end with; without such a one the text ends with
/// it.
/// "<path>" stands for a path without quotes, known by its slash, and for all that follows. A path
/// that does not say where it begins (as one that begins with a slash does) may begin with a name
/// of several words, so what stands before it goes too, back to the last colon and blank.
/// What is left may still be a name: one without a slash and without quotes.
/// Allocates nothing. Any thread.
[[nodiscard]] std::size_t copyWithoutPaths(std::string_view text, std::span<char> buffer) noexcept;

} // namespace PathRedaction
