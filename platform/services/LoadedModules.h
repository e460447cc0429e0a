#pragma once

#include "ElfImage.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// A program or library that this process runs code of.
struct LoadedModule {
    std::uintptr_t start; ///< where the file's first byte lies
    std::uintptr_t end;   ///< after the last byte mapped from it
    std::uintptr_t bias;  ///< what was added to the addresses that stand in the file
    std::string_view path;
    std::span<const std::uint8_t> buildId; ///< empty when it has none that can be read

    [[nodiscard]] std::string_view fileName() const noexcept;
};

/// What code is mapped into this process, as the kernel tells it (/proc/self/maps): the dynamic
/// linker's own list is behind a lock and on the heap, so that neither can be relied on in a crash.
/// Files that are mapped to be read only, such as databases, fonts and pictures, are left out.
/// A file whose begin cannot be read any more, because it was made shorter, is taken for what it
/// was: one that begins where it is mapped, without a build id.
/// Large (it holds its own memory): not for the stack.
/// Thread: one at a time. read() and find() may be called in a signal handler.
class LoadedModules final
{
public:
    /// Takes what is mapped now. Where the kernel does not tell, all stays as it was.
    void read() noexcept;

    [[nodiscard]] std::span<const LoadedModule> all() const noexcept;

    /// Whether more was mapped than there is room for here.
    [[nodiscard]] bool isCut() const noexcept { return m_isCut; }

    /// The module that an address lies in, or null.
    [[nodiscard]] const LoadedModule* find(std::uintptr_t address) const noexcept;

private:
    /// A line of the kernel's list.
    struct Mapping;
    /// The file whose mappings follow each other.
    struct Candidate;

    void take(std::string_view line, Candidate& candidate) noexcept;
    void add(const Candidate& candidate) noexcept;
    [[nodiscard]] std::span<const std::uint8_t> keepBuildId(const ElfImage& image) noexcept;
    [[nodiscard]] std::string_view keep(std::string_view path) noexcept;

    static constexpr std::size_t kMostModules = 512;
    /// Those that are usual have 20 bytes.
    using BuildId = std::array<std::uint8_t, 64>;

    std::size_t m_count{0};
    std::size_t m_pathsUsed{0};
    bool m_isCut{false};
    std::array<LoadedModule, kMostModules> m_modules{};
    std::array<BuildId, kMostModules> m_buildIds{};
    std::array<char, 65536> m_paths{};
};
