#pragma once

#include <QElapsedTimer>

/// What a piece of work took, from the construction on. One at a time in a process.
class Measurement final
{
public:
    /// Gives free memory back to the system and forgets its highest mark so far.
    Measurement();

    [[nodiscard]] double wallSeconds() const;
    /// As processorSeconds().
    [[nodiscard]] double cpuSeconds() const;
    /// What all threads of the process took so far, in user mode and in the kernel: it does not
    /// wait for disks, and a busy machine changes it little.
    [[nodiscard]] static double processorSeconds();
    /// The most that was resident at once, what was there before included; where the kernel cannot
    /// forget, since the start of the process.
    [[nodiscard]] static double peakMegabytes();

    /// One line: both times, peak memory, what it was.
    void print(const char* what) const;

private:
    QElapsedTimer m_timer;
    double m_cpuBefore{0.0};
};
