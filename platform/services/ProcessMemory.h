#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// This process' own memory, read by the kernel's hand: what cannot be read is an answer and no
/// fault. That a place is mapped does not say that it can be read: the file behind it may have
/// become shorter.
namespace ProcessMemory
{

enum class Outcome {
    Copied,
    NotThere, ///< not all of it can be read
    Refused   ///< the system lets nobody read so (a sandbox)
};

/// Fills `to` with what lies at `address`. For signal handlers too; any thread.
[[nodiscard]] Outcome copy(std::uintptr_t address, std::span<std::byte> to) noexcept;

} // namespace ProcessMemory
