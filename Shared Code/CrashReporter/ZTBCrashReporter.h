#pragma once

#include <QStringList>

struct CrashReporterServices;

/// Finds the crash logs of this application and offers one that is news. There are no instances.
/// Main thread, once the application has finished launching: a window may open.
class ZTBCrashReporter final
{
public:
    ZTBCrashReporter() = delete;

    /// Opens the window for the first log, in the order of crashLogPaths(), that was modified later
    /// than the last report's date, if there is one. On the first launch that date is now, so logs
    /// that are there already are never offered.
    /// Errors: raises GeneralException where no submission address is given, and AssertionFailure
    /// where a log is to be offered and the address is none.
    static void checkForNewCrashes(const CrashReporterServices& services);

    /// "Logs/DiagnosticReports" of the first Library folder that has it; of none other.
    [[nodiscard]] static QStringList crashLogDirectories(const CrashReporterServices& services);

    /// Everything in those directories and below whose path in there begins with the application's
    /// name, in the order in which the file system tells it.
    [[nodiscard]] static QStringList crashLogPaths(const CrashReporterServices& services);
};
