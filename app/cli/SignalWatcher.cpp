#include "SignalWatcher.h"

#include "Interruption.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace
{

sigset_t watchedSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

/// Ends the process as the signal does by default, its exit status included.
void endBy(int number)
{
    std::signal(number, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, number);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    kill(getpid(), number);
}

} // namespace

SignalWatcher::SignalWatcher(Interruption& interruption)
    : m_interruption(interruption)
{
    const sigset_t set = watchedSignals();
    if (pthread_sigmask(SIG_BLOCK, &set, nullptr) != 0) {
        return;
    }
    m_signals = signalfd(-1, &set, SFD_CLOEXEC);
    m_ending = eventfd(0, EFD_CLOEXEC);
    if (m_signals < 0 || m_ending < 0) {
        // Without descriptors nobody would ever see the signals: they keep their usual effect.
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
        return;
    }
    m_thread = std::thread([this] { watch(); });
}

SignalWatcher::~SignalWatcher()
{
    if (m_thread.joinable()) {
        eventfd_write(m_ending, 1);
        m_thread.join();
        const sigset_t set = watchedSignals();
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    }
    for (const int descriptor : {m_signals, m_ending}) {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
}

void SignalWatcher::watch()
{
    while (true) {
        std::array<pollfd, 2> waiting{
            pollfd{m_ending, POLLIN, 0},
            pollfd{m_signals, POLLIN, 0},
        };
        if (poll(waiting.data(), waiting.size(), -1) < 0) {
            continue;
        }
        if (waiting[0].revents != 0) {
            return;
        }
        signalfd_siginfo information{};
        if (read(m_signals, &information, sizeof information) != sizeof information) {
            continue;
        }
        if (m_interruption.isRequested()) {
            endBy(static_cast<int>(information.ssi_signo));
        } else {
            m_interruption.request();
        }
    }
}
