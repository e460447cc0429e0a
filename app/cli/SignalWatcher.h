#pragma once

#include <QtGlobal>

#include <thread>

class Interruption;

/// Turns the first SIGINT or SIGTERM into a request to stop; the second ends the process at once,
/// as it would have without this object. A thread of its own waits for them, so that a request is
/// noticed also while the main thread is busy opening a library.
///
/// Made on the main thread before any other thread starts: threads inherit that the two signals
/// are blocked. There may be one at a time.
class SignalWatcher final
{
    Q_DISABLE_COPY_MOVE(SignalWatcher)
public:
    /// `interruption` must outlive this object.
    explicit SignalWatcher(Interruption& interruption);
    ~SignalWatcher();

private:
    void watch();

    Interruption& m_interruption;
    int m_signals{-1}; ///< signalfd of the two signals
    int m_ending{-1};  ///< eventfd that ends the thread
    std::thread m_thread;
};
