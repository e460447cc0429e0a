#include "AlternateSignalStack.h"
#include "CrashLogOutput.h"
#include "CrashLogWriter.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <ucontext.h>
#include <unistd.h>
#include <unwind.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>

// A program that crashes as its argument tells it: "crashing_program KIND". Its log goes where that
// of any program of this user goes.

#define CORVANE_UNCHECKED __attribute__((noinline, no_sanitize("address", "undefined", "thread")))

using namespace Qt::StringLiterals;

namespace
{

enum class Unwinder { Works, Crashes, Hangs };

volatile Unwinder unwinder = Unwinder::Works;
/// Zero, but no compiler knows.
volatile std::uintptr_t nothing = 0;

} // namespace

// The functions whose names the logs shall tell.
extern "C" {

CORVANE_UNCHECKED void writeToNowhere()
{
    *reinterpret_cast<volatile int*>(nothing + 16) = 1;
}

CORVANE_UNCHECKED void callNowhere()
{
    reinterpret_cast<void (*)()>(nothing)();
    nothing = 0; // so that the call is no jump
}

CORVANE_UNCHECKED int divideByZero()
{
#if defined(__x86_64__) || defined(__i386__)
    volatile int number = 7;
    return number / static_cast<int>(nothing);
#else
    return std::raise(SIGFPE); // the division gives zero there
#endif
}

CORVANE_UNCHECKED void executeRubbish()
{
#if defined(__x86_64__) || defined(__i386__)
    __asm__ volatile("ud2");
#else
    std::raise(SIGILL);
#endif
}

CORVANE_UNCHECKED void readBehindFile()
{
    std::FILE* const file = std::tmpfile();
    void* const memory = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fileno(file), 0);
    const int value = *static_cast<volatile int*>(memory);
    std::printf("%d\n", value);
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

CORVANE_UNCHECKED int recurse(int depth)
{
    volatile char block[64];
    block[depth % 64] = static_cast<char>(depth);
    return depth < 0 ? 0 : recurse(depth + 1) + block[0];
}

CORVANE_UNCHECKED void freeRubbish()
{
    auto* const block = static_cast<volatile std::size_t*>(std::malloc(64));
    volatile std::size_t* volatile before = block - 1;
    *before = 3; // the allocator's own note of its size
    std::free(const_cast<std::size_t*>(block));
}

// What the log writer calls instead of the unwinder: the linker wraps it.
// NOLINTBEGIN(bugprone-reserved-identifier)
_Unwind_Reason_Code __real__Unwind_Backtrace(_Unwind_Trace_Fn visit, void* argument);

_Unwind_Reason_Code __wrap__Unwind_Backtrace(_Unwind_Trace_Fn visit, void* argument)
{
    if (unwinder == Unwinder::Crashes) {
        writeToNowhere();
    }
    while (unwinder == Unwinder::Hangs) {
        pause();
    }
    return __real__Unwind_Backtrace(visit, argument);
}

// NOLINTEND(bugprone-reserved-identifier)

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
           << (isThere ? " in writeToNowhere\n" : " elsewhere\n");
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

void overflow()
{
    std::printf("%d\n", recurse(0));
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

using Crashes = std::map<std::string, void (*)()>;

const Crashes& crashes()
{
    static const Crashes kCrashes{
        {"segv", [] { writeToNowhere(); }},
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
        {"bus", [] { readBehindFile(); }},
        {"ill", [] { executeRubbish(); }},
        {"fpe", [] { std::printf("%d\n", divideByZero()); }},
        {"abort", [] { std::abort(); }},
        {"trap", [] { std::raise(SIGTRAP); }},
        {"sys", [] { std::raise(SIGSYS); }},
        {"overflow", [] { overflow(); }},
        {"heap", [] { freeRubbish(); }},
        {"wait", [] { waitForSignal(); }},
        {"exception", [] { throw std::runtime_error("No \"/home/anna/Our Photos/a.cr2\" there"); }},
        {"plain-exception", [] { throw PlainThing(); }},
        {"terminate", [] { std::terminate(); }},
        {"thread", [] { inThread([] { writeToNowhere(); }); }},
        {"thread-overflow", [] { inThread([] { overflow(); }); }},
        {"thread-exception", [] { inThread([] { throw std::out_of_range("too far"); }); }},
        {"two-threads",
         [] {
             std::thread other([] { std::abort(); });
             writeToNowhere();
         }},
        {"second-crash",
         [] {
             unwinder = Unwinder::Crashes;
             std::abort();
         }},
        {"hang",
         [] {
             unwinder = Unwinder::Hangs;
             std::abort();
         }},
    };
    return kCrashes;
}

void leaveNoCore()
{
    // Of one byte: such a dump is also not handed to a program.
    const rlimit limit{.rlim_cur = 1, .rlim_max = 1};
    setrlimit(RLIMIT_CORE, &limit);
}

} // namespace

int main(int argc, char** argv)
{
    leaveNoCore();
    std::string kind = argc == 2 ? argv[1] : "";
    if (kind == "handled-before") {
        struct sigaction action = {};
        action.sa_sigaction = &sayWhatCame;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGSEGV, &action, nullptr);
        kind = "segv";
    }
    CrashLogWriter::install({.applicationName = u"Corvane"_s,
                             .program = u"crashing_program"_s,
                             .version = u"1.2"_s,
                             .build = u"1.2.3"_s,
                             .folder = CrashLogWriter::folder()},
                            kind == "hang" ? 1 : CrashLogWriter::kSecondsAllowed);
    const auto crash = crashes().find(kind);
    if (crash == crashes().end()) {
        return kind == "none" ? 0 : 2;
    }
    crash->second();
    return 3; // it should not have survived
}
