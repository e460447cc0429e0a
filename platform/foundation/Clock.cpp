#include "Clock.h"

#include <chrono>
#include <thread>

double SystemClock::now() const
{
    const std::chrono::duration<double> since1970 =
        std::chrono::system_clock::now().time_since_epoch();
    return since1970.count() - kSecondsFrom1970To2001;
}

void SystemClock::sleep(double seconds)
{
    if (seconds > 0.0) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    }
}
