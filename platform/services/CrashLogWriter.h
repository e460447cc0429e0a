#pragma once

#include "CrashLog.h"

#include <QString>

class Bundle;

/// Leaves a log when the program crashes: on a signal that a fault ends it with, and on an
/// exception that nobody catches. Then the signal takes its usual way, with the context and the
/// information it came with, so that the system's own handling of crashes sees it as if nothing
/// were between. What was sent and was ignored when the program started stays without effect.
///
/// The signal handler makes system calls, reads memory and calls libgcc's unwinder (CrashStack says
/// what that means), nothing else. A second crash in it ends the process at once, and another
/// thread that crashes meanwhile waits for that end. File and folder are made only in
/// the crash.
namespace CrashLogWriter
{

/// Where the logs of this user lie, made or not.
[[nodiscard]] QString folder();

/// What is said of `program`, one of the programs of the application `bundle`; its logs go to
/// folder().
[[nodiscard]] CrashLogFacts factsOf(const Bundle& bundle, const QString& program);

/// How long a log may take: whatever then holds it up, the process ends without.
inline constexpr unsigned kSecondsAllowed = 10;

/// From now on crashes are logged. Called once, at the begin of main and before any other thread is
/// started: the calling thread also gets an AlternateSignalStack; every other thread that is to
/// survive the overflow of its stack long enough must have its own.
/// Errors: where no log can be written, the program crashes without one.
void install(const CrashLogFacts& facts, unsigned secondsAllowed = kSecondsAllowed);

} // namespace CrashLogWriter
