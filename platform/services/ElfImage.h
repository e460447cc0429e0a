#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// A program or library as it lies in this process's memory, read where the kernel and the dynamic
/// linker put it: no file is opened, nothing allocated, no lock taken. For use in signal handlers;
/// takes some kilobytes of their stack. What of it cannot be read, because the file has become
/// shorter or is gone from below it, is as if it were zero, and no fault. What the headers say is
/// believed only as far as it stays within the image. Thread: one at a time.
class ElfImage final
{
public:
    /// A function of the dynamic symbol table and how far from its begin an address lies.
    struct Symbol {
        std::string_view name; ///< as the linker knows it, mangled; empty: none was found
        std::uintptr_t distance{0};
    };

    /// `start`: where the file's first byte lies; `end`: after the last byte mapped from it.
    ElfImage(std::uintptr_t start, std::uintptr_t end) noexcept;

    /// Whether there is an ELF file of this machine's own word size and byte order.
    [[nodiscard]] bool isValid() const noexcept { return m_isValid; }

    /// What the loader added to the file's own addresses; debuggers' tools want those.
    [[nodiscard]] std::uintptr_t bias() const noexcept { return m_bias; }

    /// Whether its begin can be read; what cannot may be an image all the same.
    [[nodiscard]] bool isReadable() const noexcept { return m_isReadable; }

    /// Writes the GNU build id to `buffer` and returns its length: 0 when the file has none or
    /// there is no room for it.
    [[nodiscard]] std::size_t copyBuildId(std::span<std::uint8_t> buffer) const noexcept;

    /// The function that an address of the process lies in. Its name is put into `buffer`, and cut
    /// where that ends.
    [[nodiscard]] Symbol symbolAt(std::uintptr_t address, std::span<char> buffer) const noexcept;

private:
    struct Dynamic;

    /// A part of the image.
    struct Range {
        std::uintptr_t start;
        std::size_t size;
    };

    /// No page is smaller, so that all of a block can be read or nothing of it.
    static constexpr std::size_t kBlockSize = 4096;

    [[nodiscard]] bool holds(std::uintptr_t address, std::size_t size) const noexcept;
    [[nodiscard]] bool readBlock(std::uintptr_t address) const noexcept;
    [[nodiscard]] bool copy(std::uintptr_t address, std::span<std::byte> to) const noexcept;
    template <class Value>
    [[nodiscard]] Value valueAt(std::uintptr_t address) const noexcept;
    [[nodiscard]] std::uintptr_t placeOfSegment(std::size_t index) const noexcept;
    [[nodiscard]] Range buildIdIn(Range notes, std::size_t alignment) const noexcept;
    [[nodiscard]] std::string_view copyName(Range text, std::span<char> buffer) const noexcept;
    [[nodiscard]] Dynamic dynamic() const noexcept;
    [[nodiscard]] std::size_t countSymbols(const Dynamic& tables) const noexcept;

    std::uintptr_t m_start;
    std::uintptr_t m_end;
    std::uintptr_t m_bias{0};
    std::uintptr_t m_segments{0};
    std::size_t m_segmentCount{0};
    bool m_isReadable{false};
    bool m_isValid{false};
    /// What was read last. One system call for each value would take long in a large table.
    mutable Range m_known{0, 0};
    mutable std::array<std::byte, kBlockSize> m_block{};
};
