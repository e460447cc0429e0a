#include "SignalText.h"

namespace
{

constexpr int kAnySignal = 0;
constexpr std::string_view kUnknown = "unknown";

struct Code {
    int signal;
    int code;
    std::string_view text;
};

/// sigaction(2) lists them.
constexpr std::array kCodes{
    Code{SIGSEGV, SEGV_MAPERR, "SEGV_MAPERR: no memory is mapped there"},
    Code{SIGSEGV, SEGV_ACCERR, "SEGV_ACCERR: the memory there must not be used so"},
    Code{SIGBUS, BUS_ADRALN, "BUS_ADRALN: the address is not aligned"},
    Code{SIGBUS, BUS_ADRERR, "BUS_ADRERR: the file that is mapped there ends before"},
    Code{SIGBUS, BUS_OBJERR, "BUS_OBJERR: the device failed"},
    Code{SIGILL, ILL_ILLOPC, "ILL_ILLOPC: no such instruction"},
    Code{SIGILL, ILL_ILLOPN, "ILL_ILLOPN: an operand that is not allowed"},
    Code{SIGILL, ILL_ILLADR, "ILL_ILLADR: an addressing mode that is not allowed"},
    Code{SIGILL, ILL_ILLTRP, "ILL_ILLTRP: a trap that is not allowed"},
    Code{SIGILL, ILL_PRVOPC, "ILL_PRVOPC: an instruction for the kernel only"},
    Code{SIGILL, ILL_PRVREG, "ILL_PRVREG: a register for the kernel only"},
    Code{SIGILL, ILL_COPROC, "ILL_COPROC: the coprocessor failed"},
    Code{SIGILL, ILL_BADSTK, "ILL_BADSTK: the internal stack failed"},
    Code{SIGFPE, FPE_INTDIV, "FPE_INTDIV: an integer was divided by zero"},
    Code{SIGFPE, FPE_INTOVF, "FPE_INTOVF: an integer overflowed"},
    Code{SIGFPE, FPE_FLTDIV, "FPE_FLTDIV: division by zero"},
    Code{SIGFPE, FPE_FLTOVF, "FPE_FLTOVF: overflow"},
    Code{SIGFPE, FPE_FLTUND, "FPE_FLTUND: underflow"},
    Code{SIGFPE, FPE_FLTRES, "FPE_FLTRES: an inexact result"},
    Code{SIGFPE, FPE_FLTINV, "FPE_FLTINV: an operation that is not allowed"},
    Code{SIGFPE, FPE_FLTSUB, "FPE_FLTSUB: a subscript out of range"},
    Code{SIGTRAP, TRAP_BRKPT, "TRAP_BRKPT: a breakpoint"},
    Code{SIGTRAP, TRAP_TRACE, "TRAP_TRACE: a traced step"},
    Code{SIGSYS, 1, "SYS_SECCOMP: a system call that is forbidden here"},
    Code{kAnySignal, SI_USER, "SI_USER: sent by a process"},
    Code{kAnySignal, SI_QUEUE, "SI_QUEUE: sent by a process"},
    Code{kAnySignal, SI_TKILL, "SI_TKILL: sent to the thread"},
    Code{kAnySignal, SI_KERNEL, "SI_KERNEL: sent by the kernel"},
};

} // namespace

std::string_view SignalText::name(int signal) noexcept
{
    switch (signal) {
    case SIGSEGV:
        return "SIGSEGV";
    case SIGBUS:
        return "SIGBUS";
    case SIGILL:
        return "SIGILL";
    case SIGFPE:
        return "SIGFPE";
    case SIGABRT:
        return "SIGABRT";
    case SIGTRAP:
        return "SIGTRAP";
    case SIGSYS:
        return "SIGSYS";
    default:
        return kUnknown;
    }
}

std::string_view SignalText::code(int signal, int code) noexcept
{
    for (const Code& known : kCodes) {
        if (known.code == code && (known.signal == signal || known.signal == kAnySignal)) {
            return known.text;
        }
    }
    return kUnknown;
}

bool SignalText::isSent(int code) noexcept
{
    return code <= 0;
}
