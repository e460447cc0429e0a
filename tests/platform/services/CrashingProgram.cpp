#include "AlternateSignalStack.h"
#include "CrashLogOutput.h"
#include "CrashLogWriter.h"
#include "CrashesOnPurpose.h"
#include "SignalText.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <ucontext.h>
#include <unistd.h>
#include <unwind.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

// A program that crashes as its argument tells it: "crashing_program KIND". Its log goes where that
// of any program of this user goes.

using namespace Qt::StringLiterals;

namespace
{

enum class Unwinder { Works, Crashes, Aborts, Hangs, WaitsForOther };

// Signal handlers, and those who call the unwinder, are given nothing that could lead them to
// these. NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
volatile Unwinder unwinder = Unwinder::Works;
/// Zero, but no compiler knows.
volatile std::uintptr_t nothing = 0;

std::atomic<bool> isFirstInHandler{false};
std::atomic<pid_t> otherThread{0}; ///< known once it does nothing any more but crash

// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

/// 'R' while it runs, 'S' once it waits for something.
char stateOfOther()
{
    std::array<char, 64> path{};
    std::snprintf(path.data(), path.size(), "/proc/self/task/%d/stat", otherThread.load());
    std::array<char, 256> line{};
    const int file = open(path.data(), O_RDONLY | O_CLOEXEC);
    const ssize_t count = file < 0 ? 0 : read(file, line.data(), line.size());
    close(file);
    const std::string_view text(line.data(), static_cast<std::size_t>(count < 0 ? 0 : count));
    const std::size_t end = text.rfind(')'); // of the thread's name
    return end + 2 < text.size() ? text[end + 2] : '?';
}

} // namespace

// The functions whose names the logs shall tell.
extern "C" {

CORVANE_UNCHECKED void callNowhere()
{
    reinterpret_cast<void (*)()>(nothing)();
    nothing = 0; // so that the call is no jump
}

/// Maps the begin of this program as code is mapped, from a file that has become empty since.
CORVANE_UNCHECKED void emptyMappedModule()
{
    constexpr std::size_t kSize = 4096;
    static char begin[kSize];
    std::FILE* const program = std::fopen("/proc/self/exe", "rb");
    std::FILE* const copy = std::fopen("emptied.so", "w+b");
    const bool isCopied = std::fread(begin, 1, kSize, program) == kSize &&
                          std::fwrite(begin, 1, kSize, copy) == kSize && std::fflush(copy) == 0;
    void* const memory = mmap(nullptr, kSize, PROT_READ | PROT_EXEC, MAP_PRIVATE, fileno(copy), 0);
    if (!isCopied || memory == MAP_FAILED || ftruncate(fileno(copy), 0) != 0) {
        std::_Exit(4);
    }
    std::fclose(program);
    std::fclose(copy);
}

/// Lets the other thread crash, and returns when it waits in its handler of that.
void waitUntilOtherHasCrashed()
{
    isFirstInHandler = true;
    while (otherThread == 0 || stateOfOther() != 'S') {
        usleep(1000);
    }
}

// What the log writer calls instead of the unwinder: the linker wraps it.
// NOLINTBEGIN(bugprone-reserved-identifier)
_Unwind_Reason_Code __real__Unwind_Backtrace(_Unwind_Trace_Fn visit, void* argument);

_Unwind_Reason_Code __wrap__Unwind_Backtrace(_Unwind_Trace_Fn visit, void* argument)
{
    if (unwinder == Unwinder::Crashes) {
        writeToNowhere();
    }
    if (unwinder == Unwinder::Aborts) {
        std::abort();
    }
    while (unwinder == Unwinder::Hangs) {
        pause();
    }
    if (unwinder == Unwinder::WaitsForOther) {
        waitUntilOtherHasCrashed();
    }
    return __real__Unwind_Backtrace(visit, argument);
}

// NOLINTEND(bugprone-reserved-identifier)

void doNothing(int) {}

/// Stands for a handler of somebody else that was there before: tells what reaches it.
void sayWhatCame(int signal, siginfo_t* information, void* context)
{
#if defined(__x86_64__)
    const auto at = static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP];
#elif defined(__aarch64__)
    const auto at = static_cast<ucontext_t*>(context)->uc_mcontext.pc;
#else
    const auto at = reinterpret_cast<std::uintptr_t>(&writeToNowhere);
#endif
    const bool isThere =
        static_cast<std::uintptr_t>(at) - reinterpret_cast<std::uintptr_t>(&writeToNowhere) < 64;
    CrashLogOutput output(STDOUT_FILENO);
    output << "signal " << Decimal{signal} << " code " << Decimal{information->si_code}
           << " address " << Hexadecimal{reinterpret_cast<std::uintptr_t>(information->si_addr)}
           << (isThere ? " in writeToNowhere" : " elsewhere")
           << (gettid() == getpid() ? "\n" : " of another thread\n");
    struct sigaction alarmAction = {};
    sigaction(SIGALRM, nullptr, &alarmAction);
    output << "alarms " << (alarmAction.sa_handler == &doNothing ? "as before" : "changed") << ", "
           << Decimal{alarm(0)} << " s left\n";
    output.flush();
    _exit(42);
}
} // extern "C"

namespace
{

void waitForSignal()
{
    std::puts("ready");
    std::fflush(stdout);
    while (true) {
        pause();
    }
}

void inThread(void (*crash)())
{
    std::thread([crash] {
        prctl(PR_SET_NAME, "busy worker");
        const AlternateSignalStack signalStack;
        crash();
    }).join();
}

void useUpDescriptors()
{
    const rlimit limit{.rlim_cur = 64, .rlim_max = 64};
    setrlimit(RLIMIT_NOFILE, &limit);
    while (dup(STDOUT_FILENO) >= 0) {
    }
}

struct PlainThing {
};

/// What CrashesOnPurpose does not know: what is about the writing of logs itself.
const CrashesOnPurpose::Kinds& moreKinds()
{
    static const CrashesOnPurpose::Kinds kKinds{
        {"call", [] { callNowhere(); }},
        {"no-descriptors",
         [] {
             emptyMappedModule();
             useUpDescriptors();
             writeToNowhere();
         }},
        {"emptied-module",
         [] {
             emptyMappedModule();
             writeToNowhere();
         }},
        {"wait", [] { waitForSignal(); }},
        {"plain-exception", [] { throw PlainThing(); }},
        {"terminate", [] { std::terminate(); }},
        {"thread", [] { inThread([] { writeToNowhere(); }); }},
        {"thread-overflow", [] { inThread([] { std::printf("%d\n", recurse(0)); }); }},
        {"thread-exception", [] { inThread([] { throw std::out_of_range("too far"); }); }},
        {"two-threads",
         [] {
             unwinder = Unwinder::WaitsForOther;
             std::thread other([] {
                 while (!isFirstInHandler) {
                 }
                 otherThread = gettid();
                 writeToNowhere();
             });
             std::abort();
         }},
        {"second-crash",
         [] {
             unwinder = Unwinder::Crashes;
             std::abort();
         }},
        {"abort-in-handler",
         [] {
             unwinder = Unwinder::Aborts;
             writeToNowhere();
         }},
        {"hang",
         [] {
             unwinder = Unwinder::Hangs;
             std::abort();
         }},
    };
    return kKinds;
}

void leaveNoCore()
{
    // Of one byte: such a dump is also not handed to a program.
    const rlimit limit{.rlim_cur = 1, .rlim_max = 1};
    setrlimit(RLIMIT_CORE, &limit);
}

/// Whether `text` began with `prefix`, which is gone then.
bool takePrefix(std::string& text, std::string_view prefix)
{
    const bool isThere = text.starts_with(prefix);
    text.erase(0, isThere ? prefix.size() : 0);
    return isThere;
}

/// As of a program that had handlers before crashes were logged.
void setHandlersBefore()
{
    struct sigaction action = {};
    action.sa_sigaction = &sayWhatCame;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &action, nullptr);
    std::signal(SIGALRM, &doNothing);
}

} // namespace

int main(int argc, char** argv)
{
    leaveNoCore();
    std::string kind = argc == 2 ? argv[1] : "";
    if (takePrefix(kind, "handled-before-")) {
        setHandlersBefore();
    }
    if (takePrefix(kind, "ignored-before-")) {
        for (const int signal : SignalText::kOfFaults) {
            std::signal(signal, SIG_IGN);
        }
    }
    CrashLogWriter::install({.applicationName = u"Corvane"_s,
                             .program = u"crashing_program"_s,
                             .version = u"1.2"_s,
                             .build = u"1.2.3"_s,
                             .folder = CrashLogWriter::folder()},
                            kind == "hang" ? 1 : CrashLogWriter::kSecondsAllowed);
    for (const CrashesOnPurpose::Kinds* const kinds : {&CrashesOnPurpose::kinds(), &moreKinds()}) {
        if (const auto crash = kinds->find(kind); crash != kinds->end()) {
            crash->second();
            return 3; // it should not have survived
        }
    }
    return kind == "none" ? 0 : 2;
}
