#include "ZTBCrashReporter.h"

#include "Bundle.h"
#include "Clock.h"
#include "CrashReportDates.h"
#include "CrashReporterServices.h"
#include "NamedException.h"
#include "UserDefaults.h"
#include "ZTBCrashReporterWindowController.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace
{

constexpr QLatin1StringView kSubmissionKey = "ZTBCrashReporterCrashSubmissionURL"_L1;

/// Raises where there is none. An address that is there may still be no URL.
QString submissionAddress(const CrashReporterServices& services)
{
    for (const QVariant& entry : {services.defaults.value(kSubmissionKey),
                                  services.bundle.infoDictionary().value(kSubmissionKey)}) {
        if (entry.typeId() == QMetaType::QString) {
            return entry.toString();
        }
    }
    throw GeneralException(
        u"Missing ZTBCrashReporterCrashSubmissionURL"_s,
        u"You must specify the URL for crash log submission as the "
        "ZTBCrashReporterCrashSubmissionURL in either Info.plist or the user defaults!"_s);
}

double lastReportDate(const CrashReporterServices& services)
{
    if (const std::optional<double> date = CrashReportDates::lastReport(services.defaults)) {
        return *date;
    }
    const double now = services.clock.now();
    CrashReportDates::setLastReport(services.defaults, now);
    return now;
}

} // namespace

void ZTBCrashReporter::checkForNewCrashes(const CrashReporterServices& services)
{
    const QString address = submissionAddress(services);
    const double lastReport = lastReportDate(services);
    const QStringList paths = crashLogPaths(services);
    for (const QString& path : paths) {
        const std::optional<double> modified = CrashReportDates::modificationDate(path);
        if (modified && lastReport < *modified) {
            ZTBCrashReporterWindowController::showWindowForCrashLogPath(
                services, path, QUrl(address, QUrl::StrictMode));
            return;
        }
    }
}

QStringList ZTBCrashReporter::crashLogDirectories(const CrashReporterServices& services)
{
    for (const QString& library : services.libraries) {
        const QString directory = library + "/Logs/DiagnosticReports"_L1;
        if (QFileInfo(directory).isDir()) {
            return {directory};
        }
    }
    return {};
}

QStringList ZTBCrashReporter::crashLogPaths(const CrashReporterServices& services)
{
    const QString name = services.bundle.name();
    QStringList paths;
    if (name.isEmpty()) {
        return paths;
    }
    const QStringList directories = crashLogDirectories(services);
    for (const QString& directory : directories) {
        QDirIterator walk(directory,
                          QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString path = walk.next();
            if (path.mid(directory.size() + 1).startsWith(name)) {
                paths.append(path);
            }
        }
    }
    return paths;
}
