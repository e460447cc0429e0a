#include "Exiv2Messages.h"

#include <algorithm>
#include <array>

using namespace std::string_view_literals;

namespace
{

constexpr std::array kOfLostBlocks{
    "Failed to decode Exif"sv,
    "Failed to decode IPTC"sv,
    // The directory is not read, since its place holds another one.
    "Photo pointer references"sv,
    "GPSInfo pointer references"sv,
    "Iop pointer references"sv,
};

constexpr std::array kOfRefusedXmp{
    "Failed to decode XMP"sv,
    "XMP Toolkit error"sv, // all that is said of HEIF files
};

constexpr std::array kStandardDirectories{"Image"sv, "Photo"sv, "GPSInfo"sv, "Iop"sv};

/// Of a directory, or of an entry.
constexpr std::array kOfLostParts{
    "cannot read entry count"sv,
    "considered invalid; not read"sv,
    "lies outside of the data buffer"sv,
    "is out of bounds; ignoring it"sv,
    "doesn't look like a sub-IFD"sv,
    "skipping entry"sv,
    "truncating the entry"sv,
};

template <typename List>
bool beginsWithAny(std::string_view text, const List& beginnings)
{
    return std::ranges::any_of(
        beginnings, [text](std::string_view beginning) { return text.starts_with(beginning); });
}

/// "Photo" of "Offset of directory Photo, entry 0x829a is out of bounds".
std::string_view directoryIn(std::string_view message)
{
    constexpr std::string_view kWord = "irectory ";
    const size_t word = message.find(kWord);
    if (word == std::string_view::npos) {
        return {};
    }
    const std::string_view rest = message.substr(word + kWord.size());
    return rest.substr(0, rest.find_first_of(" ,:"));
}

} // namespace

bool Exiv2Messages::tellsOfLoss(std::string_view message)
{
    return beginsWithAny(message, kOfLostBlocks) ||
           (std::ranges::find(kStandardDirectories, directoryIn(message)) !=
                kStandardDirectories.end() &&
            std::ranges::any_of(kOfLostParts, [message](std::string_view part) {
                return message.find(part) != std::string_view::npos;
            }));
}

bool Exiv2Messages::tellsOfRefusedXmp(std::string_view message)
{
    return beginsWithAny(message, kOfRefusedXmp);
}
