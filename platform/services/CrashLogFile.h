#pragma once

#include "UtcTime.h"

#include <sys/types.h>

#include <array>
#include <climits>
#include <cstddef>
#include <string_view>

/// The file of a crash log: "NAME_2026-01-31_12-05-59_4711.crash" in the folder of crash logs, with
/// date and time in UTC and the id of the process, mode 0600.
/// Thread: one at a time. All but prepare() may be called in a signal handler.
class CrashLogFile final
{
public:
    /// Nothing is made yet. `folder`: absolute. `name`: a slash in it becomes "_". Without a
    /// folder, without a name, or with too long ones there will be no files.
    void prepare(std::string_view folder, std::string_view name) noexcept;

    /// Makes the file and returns its descriptor for writing, the caller's to close; -1 when there
    /// is one of that name already or it cannot be made. The folder is made now where it is not
    /// there, with those above it, mode 0700: one that is there without any log would keep logs
    /// elsewhere from being looked for.
    [[nodiscard]] int create(const UtcTime& time, pid_t process) noexcept;

    /// Removes what create() made.
    void remove() const noexcept;

private:
    void append(std::string_view text) noexcept;
    void append(long long number, std::size_t width) noexcept;
    void makeFolders() noexcept;

    std::size_t m_folderLength{0}; ///< with the slash at its end
    std::size_t m_prefixLength{0}; ///< what is known beforehand; 0: no files
    std::size_t m_length{0};
    std::array<char, PATH_MAX> m_path{};
};
