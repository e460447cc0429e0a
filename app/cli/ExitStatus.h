#pragma once

/// What the process ends with; scripts rely on these numbers.
namespace ExitStatus
{

inline constexpr int kDone = 0;
/// A scan was stopped by an alert, photos were not converted, a check found something wrong, or a
/// repair or restore left something undone.
inline constexpr int kNotAll = 1;
/// Wrong usage: nothing was done.
inline constexpr int kUsage = 2;
/// The library cannot be used, or not for what was asked.
inline constexpr int kLibrary = 3;
/// Ended early by SIGINT or SIGTERM, as shells number it (128 + SIGINT).
inline constexpr int kInterrupted = 130;

} // namespace ExitStatus
