#pragma once

#include <array>
#include <csignal>
#include <string_view>

/// The signals that a fault of the program ends it with, and what they are called. The C library's
/// own texts are translated and may take locks; these may be used in a signal handler.
namespace SignalText
{

inline constexpr std::array kOfFaults{SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS};

/// "SIGSEGV"; "unknown" for one that is not of kOfFaults.
[[nodiscard]] std::string_view name(int signal) noexcept;

/// What the code in a signal's information (si_code) means, "SEGV_MAPERR: no memory is mapped
/// there"; "unknown" where it is not known here.
[[nodiscard]] std::string_view code(int signal, int code) noexcept;

/// Whether the signal was sent by a process, or by a thread of this one, and is no fault.
[[nodiscard]] bool isSent(int code) noexcept;

} // namespace SignalText
