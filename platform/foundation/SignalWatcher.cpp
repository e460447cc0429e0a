#include "SignalWatcher.h"

#include "AlternateSignalStack.h"
#include "Interruption.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace
{

constexpr unsigned char kEnd = 0; // no signal has this number

/// Where the handler writes; -1 while nobody watches.
std::atomic<int>& mailbox()
{
    static std::atomic<int> descriptor{-1};
    static_assert(std::atomic<int>::is_always_lock_free, "a handler may wait for nothing");
    return descriptor;
}

void put(int descriptor, unsigned char number)
{
    while (::write(descriptor, &number, sizeof number) < 0 && errno == EINTR) {
    }
}

} // namespace

extern "C" {

/// Only what is allowed in a handler. From now on both signals have their usual effect.
static void noteSignal(int number)
{
    const int errorBefore = errno;
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    if (const int descriptor = mailbox(); descriptor >= 0) {
        put(descriptor, static_cast<unsigned char>(number));
    }
    errno = errorBefore;
}
}

SignalWatcher::SignalWatcher(Interruption& interruption)
    : m_interruption(interruption)
{
    if (::pipe2(m_pipe.data(), O_CLOEXEC) != 0) {
        return; // the signals keep their usual effect
    }
    mailbox() = m_pipe[1];
    m_thread = std::thread([this] {
        const AlternateSignalStack signalStack;
        watch();
    });

    struct sigaction noting = {};
    noting.sa_handler = noteSignal;
    noting.sa_flags = SA_RESTART;
    sigemptyset(&noting.sa_mask);
    sigaddset(&noting.sa_mask, SIGINT);
    sigaddset(&noting.sa_mask, SIGTERM);
    sigaction(SIGINT, &noting, &m_interruptBefore);
    sigaction(SIGTERM, &noting, &m_terminateBefore);
}

SignalWatcher::~SignalWatcher()
{
    if (!m_thread.joinable()) {
        return;
    }
    sigaction(SIGINT, &m_interruptBefore, nullptr);
    sigaction(SIGTERM, &m_terminateBefore, nullptr);
    mailbox() = -1;
    put(m_pipe[1], kEnd);
    m_thread.join();
    for (const int descriptor : m_pipe) {
        ::close(descriptor);
    }
}

void SignalWatcher::watch()
{
    while (true) {
        unsigned char number = kEnd;
        const ssize_t count = ::read(m_pipe[0], &number, sizeof number);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count != sizeof number || number == kEnd) {
            return;
        }
        if (m_interruption.isRequested()) {
            // Two came at once, or the wish was there before.
            std::signal(number, SIG_DFL);
            ::kill(::getpid(), number);
        } else {
            m_firstSignal = number;
            m_interruption.request();
        }
    }
}
