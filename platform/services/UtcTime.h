#pragma once

#include <ctime>

/// A moment as date and time of day in UTC. The C library's conversions may take locks; this one
/// may be used in a signal handler.
struct UtcTime {
    int year;
    int month; ///< 1 to 12
    int day;   ///< 1 to 31
    int hour;
    int minute;
    int second;

    /// `seconds` since 1970, negative ones included. Leap seconds do not exist, as in POSIX.
    [[nodiscard]] static UtcTime of(std::time_t seconds) noexcept;

    friend bool operator==(const UtcTime&, const UtcTime&) = default;
};
