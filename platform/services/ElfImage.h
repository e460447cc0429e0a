#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// A program or library as it lies in this process's memory, read where the kernel and the dynamic
/// linker put it: no file is opened, nothing allocated, no lock taken. For use in signal handlers.
/// A view: the memory must stay mapped and readable. What the headers say is believed only as far
/// as it stays within the image.
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

    /// The GNU build id, empty when the file has none.
    [[nodiscard]] std::span<const std::uint8_t> buildId() const noexcept;

    /// The function that an address of the process lies in.
    [[nodiscard]] Symbol symbolAt(std::uintptr_t address) const noexcept;

private:
    struct Dynamic;

    [[nodiscard]] bool holds(std::uintptr_t address, std::size_t size) const noexcept;
    [[nodiscard]] std::span<const std::uint8_t> bytes(std::uintptr_t address,
                                                      std::size_t size) const noexcept;
    template <class Value>
    [[nodiscard]] Value valueAt(std::uintptr_t address) const noexcept;
    [[nodiscard]] std::uintptr_t placeOfSegment(std::size_t index) const noexcept;
    [[nodiscard]] std::span<const std::uint8_t> buildIdIn(std::span<const std::uint8_t> notes,
                                                          std::size_t alignment) const noexcept;
    [[nodiscard]] Dynamic dynamic() const noexcept;
    [[nodiscard]] std::size_t countSymbols(const Dynamic& tables) const noexcept;

    std::uintptr_t m_start;
    std::uintptr_t m_end;
    std::uintptr_t m_bias{0};
    std::uintptr_t m_segments{0};
    std::size_t m_segmentCount{0};
    bool m_isValid{false};
};
