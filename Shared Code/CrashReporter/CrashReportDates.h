#pragma once

#include <QString>

#include <optional>

class UserDefaults;

/// The dates that decide which crash log is news, in seconds since 2001-01-01T00:00:00 UTC with
/// their fractions, and how the date of a report is written. Any thread.
namespace CrashReportDates
{

/// When the file (a link itself, not what it points to) was last modified; none where its
/// attributes cannot be read.
[[nodiscard]] std::optional<double> modificationDate(const QString& path);

/// "ZTBCrashReporterLastCrashReportDate". The settings keep dates to the second only, since other
/// programs cannot read a property list whose dates have fractions. So the exact moment is stored
/// beside it, as the number "ZTBCrashReporterLastCrashReportTime"; it counts as long as it lies
/// within the second of the date, so that whoever sets the date alone is obeyed.
[[nodiscard]] std::optional<double> lastReport(const UserDefaults& defaults);
void setLastReport(UserDefaults& defaults, double date);

/// The date in the locale's medium date and medium time style (Unicode CLDR) and in the time zone
/// of the machine. `locale`: language, script, region, variants and keywords such as "en_US",
/// "zh-Hant-TW", "en_US_POSIX" or "de_DE@calendar=japanese"; for what is none or not known the date
/// is shown as in the root locale.
[[nodiscard]] QString text(double date, const QString& locale);

} // namespace CrashReportDates
