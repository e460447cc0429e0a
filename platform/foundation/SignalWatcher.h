#pragma once

#include <QtGlobal>

#include <array>
#include <atomic>
#include <csignal>
#include <thread>

class Interruption;

/// Turns the first SIGINT or SIGTERM into a request to stop; the second ends the process at once,
/// as it would have without this object. A thread of its own hands the request on, so that it is
/// noticed also while the main thread is busy opening a library.
///
/// The signals are caught, not blocked: programs that are started meanwhile inherit nothing of it.
/// There may be one at a time, made and gone on the same thread.
class SignalWatcher final
{
    Q_DISABLE_COPY_MOVE(SignalWatcher)
public:
    /// `interruption` must outlive this object.
    explicit SignalWatcher(Interruption& interruption);
    ~SignalWatcher();

    /// The number of the signal that asked to stop; 0 when none did. Any thread.
    [[nodiscard]] int firstSignal() const { return m_firstSignal; }

    /// What a program returns that a signal stopped in order, as shells number it.
    [[nodiscard]] static constexpr int exitStatus(int signal) { return 128 + signal; }

private:
    void watch();

    Interruption& m_interruption;
    std::atomic<int> m_firstSignal{0};
    std::array<int, 2> m_pipe{-1, -1}; ///< numbers of signals, a byte each; 0 ends the thread
    struct sigaction m_interruptBefore = {};
    struct sigaction m_terminateBefore = {};
    std::thread m_thread;
};
