#include "UtcTime.h"

namespace
{

constexpr long long kSecondsOfDay = 86400;
constexpr long long kDaysOfFourYears = 4 * 365 + 1;
constexpr long long kDaysOfCentury = 25 * kDaysOfFourYears - 1;
constexpr long long kDaysOfCycle = 4 * kDaysOfCentury + 1; ///< 400 years: the calendar repeats
/// From 0000-03-01 to 1970-01-01.
constexpr long long kDaysUntilEpoch = 719468;

} // namespace

UtcTime UtcTime::of(std::time_t seconds) noexcept
{
    const long long total = seconds;
    long long days = total / kSecondsOfDay;
    long long secondOfDay = total % kSecondsOfDay;
    if (secondOfDay < 0) {
        secondOfDay += kSecondsOfDay;
        --days;
    }
    // Years begin on the first of March here, so that a leap day is the last day of its year.
    days += kDaysUntilEpoch;
    const long long cycle = (days >= 0 ? days : days - (kDaysOfCycle - 1)) / kDaysOfCycle;
    const long long dayOfCycle = days - cycle * kDaysOfCycle;
    const long long yearOfCycle = (dayOfCycle - dayOfCycle / (kDaysOfFourYears - 1) +
                                   dayOfCycle / kDaysOfCentury - dayOfCycle / (kDaysOfCycle - 1)) /
                                  365;
    const long long dayOfYear =
        dayOfCycle - (365 * yearOfCycle + yearOfCycle / 4 - yearOfCycle / 100);
    // Five months from March on always have 153 days.
    const long long monthFromMarch = (5 * dayOfYear + 2) / 153;
    const long long day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    const long long month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const long long year = cycle * 400 + yearOfCycle + (month <= 2 ? 1 : 0);
    return {static_cast<int>(year),
            static_cast<int>(month),
            static_cast<int>(day),
            static_cast<int>(secondOfDay / 3600),
            static_cast<int>(secondOfDay / 60 % 60),
            static_cast<int>(secondOfDay % 60)};
}
