#include "CrashLogWriter.h"

#include "AlternateSignalStack.h"
#include "Bundle.h"
#include "Directories.h"
#include "SignalText.h"
#include "UncaughtException.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <exception>

using namespace Qt::StringLiterals;

namespace
{

using Action = struct sigaction; // there is a function of that name

struct State {
    CrashLog log;
    UncaughtException exception;
    std::array<Action, SignalText::kOfFaults.size()> previousActions{};
    std::array<bool, SignalText::kOfFaults.size()> wereIgnored{};
    Action previousAlarmAction{};
    unsigned previousAlarm{0}; ///< seconds that were left of it; 0: there was none
    std::terminate_handler previousTerminate{nullptr};
    unsigned secondsAllowed{0};
    std::atomic<pid_t> writer{0}; ///< the thread that writes the log
    std::atomic<int> signal{0};   ///< that it writes the log of
};

// Signal handlers are given nothing that could lead them to it.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
constinit State crashState;

/// Ends the process as the signal does by default.
[[noreturn]] void endBy(int signal) noexcept
{
    const Action byDefault{};
    ::sigaction(signal, &byDefault, nullptr);
    sigset_t set{};
    sigemptyset(&set);
    sigaddset(&set, signal);
    tgkill(getpid(), gettid(), signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    _exit(128 + signal);
}

extern "C" void onTimeOut(int)
{
    endBy(crashState.signal);
}

/// A handler that never returned, because the crash happened under a lock that it needs after all,
/// would be worse than one that tells nothing: the program would hang and keep what it has open.
void limitTime() noexcept
{
    Action action{};
    action.sa_handler = &onTimeOut;
    sigfillset(&action.sa_mask);
    crashState.previousAlarm = alarm(0);
    ::sigaction(SIGALRM, &action, &crashState.previousAlarmAction);
    sigset_t set{};
    sigemptyset(&set);
    sigaddset(&set, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    alarm(crashState.secondsAllowed);
}

/// What limitTime() did is undone: whoever handled the signal before may go on with the program.
void endLimit() noexcept
{
    alarm(0);
    ::sigaction(SIGALRM, &crashState.previousAlarmAction, nullptr);
    if (crashState.previousAlarm > 0) {
        alarm(crashState.previousAlarm);
    }
}

/// Whether the process was started with this signal ignored, and it was sent: then it still has no
/// effect. A fault does not ask, nor does abort(), which ends the process also where its signal is
/// ignored.
bool isStillIgnored(int signal, const siginfo_t& information) noexcept
{
    if (!SignalText::isSent(information.si_code) ||
        (signal == SIGABRT && information.si_pid == getpid())) {
        return false;
    }
    const auto* const place = std::ranges::find(SignalText::kOfFaults, signal);
    return crashState.wereIgnored[static_cast<std::size_t>(place - SignalText::kOfFaults.begin())];
}

/// Puts the actions back that were there before this program's handler, and sends the signal again.
/// It is blocked until the handler returns, and thus meets the thread where it met it first.
void passOn(int signal, const siginfo_t& information) noexcept
{
    std::size_t index = 0;
    for (const Action& previous : crashState.previousActions) {
        ::sigaction(SignalText::kOfFaults[index], &previous, nullptr);
        ++index;
    }
    siginfo_t same = information;
    if (syscall(SYS_rt_tgsigqueueinfo, getpid(), gettid(), signal, &same) != 0) {
        tgkill(getpid(), gettid(), signal);
    }
}

extern "C" void onFault(int signal, siginfo_t* information, void* context)
{
    if (isStillIgnored(signal, *information)) {
        return;
    }
    const int errorNumber = errno;
    pid_t writer = 0;
    if (!crashState.writer.compare_exchange_strong(writer, gettid())) {
        if (writer == gettid()) {
            endBy(signal);
        }
        while (true) {
            pause();
        }
    }
    crashState.signal = signal;
    limitTime();
    crashState.log.write({signal, information, context, &crashState.exception});
    endLimit();
    passOn(signal, *information);
    errno = errorNumber;
}

[[noreturn]] void onTerminate() noexcept
{
    crashState.exception.takeCurrent();
    // It says on standard error what was thrown, and aborts.
    if (crashState.previousTerminate != nullptr) {
        crashState.previousTerminate();
    }
    std::abort();
}

} // namespace

QString CrashLogWriter::folder()
{
    return Directories::state() + "/Logs/DiagnosticReports"_L1;
}

CrashLogFacts CrashLogWriter::factsOf(const Bundle& bundle, const QString& program)
{
    return {.applicationName = bundle.name(),
            .program = program,
            .version = bundle.version(),
            .build = bundle.infoDictionary().value(u"CFBundleVersion"_s).toString(),
            .folder = folder()};
}

void CrashLogWriter::install(const CrashLogFacts& facts, unsigned secondsAllowed)
{
    crashState.secondsAllowed = secondsAllowed;
    crashState.log.prepare(facts);
    AlternateSignalStack::setUpForGood();
    crashState.previousTerminate = std::set_terminate(&onTerminate);

    Action action{};
    action.sa_sigaction = &onFault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigfillset(&action.sa_mask);
    std::size_t index = 0;
    for (const int signal : SignalText::kOfFaults) {
        Action& previous = crashState.previousActions[index];
        ::sigaction(signal, &action, &previous);
        crashState.wereIgnored[index] = previous.sa_handler == SIG_IGN;
        if (crashState.wereIgnored[index]) {
            previous = {}; // a fault ends the process all the same
        }
        ++index;
    }
}
