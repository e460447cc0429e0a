#include "CrashesOnPurpose.h"

#include <csignal>
#include <cstdlib>

// Loaded into a program before it starts (LD_PRELOAD): at SIGUSR1 the program crashes in the way
// that the variable CORVANE_CRASH names. So it can be made to crash on purpose without holding
// anything for that itself.

namespace
{

void crash(int)
{
    const char* const kind = std::getenv("CORVANE_CRASH");
    CrashesOnPurpose::kinds().at(kind == nullptr ? "" : kind)();
}

[[gnu::constructor]] void prepare()
{
    // Made now: in a signal handler nothing is allocated.
    if (!CrashesOnPurpose::kinds().empty()) {
        std::signal(SIGUSR1, &crash);
    }
}

} // namespace
