#include "LoadedModules.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>

namespace
{

constexpr std::string_view kDeleted = " (deleted)"; // an update replaced the file meanwhile
/// The longest path there is, with room for what stands before it.
constexpr std::size_t kLongestLine = 4096 + 128;

/// The text up to the first `separator`, which goes with it.
std::string_view cutFirst(std::string_view& text, char separator)
{
    const std::size_t length = std::min(text.find(separator), text.size());
    const std::string_view first = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return first;
}

std::uintptr_t hexadecimal(std::string_view digits)
{
    std::uintptr_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return value;
}

} // namespace

struct LoadedModules::Mapping {
    std::uintptr_t start;
    std::uintptr_t end;
    std::string_view permissions;
    std::uintptr_t offset;
    std::string_view path;

    /// "start-end rwxp offset device inode    path", all numbers but the inode's hexadecimal.
    static Mapping of(std::string_view line)
    {
        Mapping mapping{};
        mapping.start = hexadecimal(cutFirst(line, '-'));
        mapping.end = hexadecimal(cutFirst(line, ' '));
        mapping.permissions = cutFirst(line, ' ');
        mapping.offset = hexadecimal(cutFirst(line, ' '));
        cutFirst(line, ' ');
        cutFirst(line, ' ');
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        mapping.path =
            line.ends_with(kDeleted) ? line.substr(0, line.size() - kDeleted.size()) : line;
        return mapping;
    }

    [[nodiscard]] bool has(char permission) const
    {
        return permissions.find(permission) != std::string_view::npos;
    }
};

struct LoadedModules::Candidate {
    std::uintptr_t start{0};
    std::uintptr_t end{0};
    bool isReadable{false};
    bool isCode{false};
    std::string_view path;
};

std::string_view LoadedModule::fileName() const noexcept
{
    return path.substr(path.rfind('/') + 1); // npos + 1 is 0
}

void LoadedModules::read() noexcept
{
    const int file = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return;
    }
    m_count = 0;
    m_pathsUsed = 0;
    m_isCut = false;
    Candidate candidate;
    std::array<char, kLongestLine> line{};
    std::size_t length = 0;
    std::array<char, 4096> block{};
    while (true) {
        const ssize_t count = ::read(file, block.data(), block.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        for (const char character :
             std::string_view(block.data(), static_cast<std::size_t>(count))) {
            if (character == '\n') {
                take({line.data(), length}, candidate);
                length = 0;
            } else if (length < line.size()) {
                line[length] = character;
                ++length;
            }
        }
    }
    ::close(file);
    add(candidate);
}

void LoadedModules::take(std::string_view line, Candidate& candidate) noexcept
{
    const Mapping mapping = Mapping::of(line);
    if (mapping.path.empty()) {
        return;
    }
    const bool isSameFile =
        mapping.path == candidate.path && (mapping.offset != 0 || mapping.start == candidate.end);
    if (isSameFile) {
        candidate.end = mapping.end;
        candidate.isCode = candidate.isCode || mapping.has('x');
        return;
    }
    add(candidate);
    candidate = {};
    if (mapping.offset == 0) {
        candidate = {.start = mapping.start,
                     .end = mapping.end,
                     .isReadable = mapping.has('r'),
                     .isCode = mapping.has('x'),
                     .path = keep(mapping.path)};
    }
}

void LoadedModules::add(const Candidate& candidate) noexcept
{
    if (!candidate.isReadable || !candidate.isCode) {
        // Its path is the last that was kept.
        m_pathsUsed -= candidate.path.size();
        return;
    }
    const ElfImage image(candidate.start, candidate.end);
    if (image.isReadable() && !image.isValid()) {
        m_pathsUsed -= candidate.path.size();
        return;
    }
    if (m_count == m_modules.size()) {
        m_isCut = true;
        return;
    }
    m_modules[m_count] = {.start = candidate.start,
                          .end = candidate.end,
                          .bias = image.isValid() ? image.bias() : candidate.start,
                          .path = candidate.path,
                          .buildId = keepBuildId(image)};
    ++m_count;
}

std::span<const std::uint8_t> LoadedModules::keepBuildId(const ElfImage& image) noexcept
{
    const std::span<std::uint8_t> kept(m_buildIds[m_count]);
    return kept.first(image.copyBuildId(kept));
}

std::string_view LoadedModules::keep(std::string_view path) noexcept
{
    if (path.size() > m_paths.size() - m_pathsUsed) {
        m_isCut = true;
        return {};
    }
    const std::span<char> kept = std::span(m_paths).subspan(m_pathsUsed, path.size());
    std::ranges::copy(path, kept.begin());
    m_pathsUsed += path.size();
    return {kept.data(), kept.size()};
}

std::span<const LoadedModule> LoadedModules::all() const noexcept
{
    return std::span(m_modules).first(m_count);
}

const LoadedModule* LoadedModules::find(std::uintptr_t address) const noexcept
{
    for (const LoadedModule& module : all()) {
        if (address >= module.start && address < module.end) {
            return &module;
        }
    }
    return nullptr;
}
