#pragma once

#include <QElapsedTimer>

#include <string>

/// Runs from its construction on.
class Stopwatch final
{
public:
    Stopwatch();

    [[nodiscard]] double wallSeconds() const;
    /// What all threads of the process took, in user mode and in the kernel: it does not wait for
    /// disks, and a busy machine changes it little.
    [[nodiscard]] double cpuSeconds() const;

private:
    QElapsedTimer m_timer;
    double m_cpuBefore{0.0};
};

/// What a piece of work is to take at most; 0: whatever it takes.
struct Aims {
    double cpuSeconds{0.0};
    double megabytes{0.0};
};

/// What a piece of work took, from the construction on. One at a time in a process.
class Measurement final
{
public:
    /// Gives free memory back to the system and forgets its highest mark so far.
    Measurement();

    /// The most that was resident at once, what was there before included; where the kernel cannot
    /// forget, since the start of the process.
    [[nodiscard]] static double peakMegabytes();

    /// A line each for the time of processors, the time on the clock and peak memory.
    void print(const std::string& what, const Aims& aims = {}) const;

private:
    Stopwatch m_watch;
};
