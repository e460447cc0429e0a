#include "ScanClosing.h"

#include "CommandLineTexts.h"
#include "ScanReport.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

/// A photo is converted to a file of its own name with another extension.
bool bearsAnotherName(const ScanReport::Entry& entry)
{
    const auto stem = [](const QString& name) { return QFileInfo(name).completeBaseName(); };
    return !entry.outcome.importedAs.isEmpty() &&
           stem(entry.outcome.importedAs) != stem(entry.filename);
}

bool wasNotConverted(const ScanReport::Entry& entry)
{
    return entry.outcome.kind != PhotoOutcome::Kind::Converted &&
           entry.outcome.kind != PhotoOutcome::Kind::NotReached;
}

} // namespace

QStringList ScanClosing::lines(const ScanReport& report, bool removesOriginals)
{
    QStringList failures;
    QStringList renamed;
    for (const ScanReport::Entry& entry : report.photos) {
        const QString reason =
            entry.outcome.reason.isEmpty() ? CommandLineTexts::noReason() : entry.outcome.reason;
        if (wasNotConverted(entry)) {
            failures +=
                u"  "_s + CommandLineTexts::photoWithReason(entry.filename, entry.id, reason);
        } else if (bearsAnotherName(entry)) {
            renamed +=
                CommandLineTexts::otherName(entry.filename, entry.id, entry.outcome.importedAs);
        }
    }
    QStringList lines;
    if (!failures.isEmpty()) {
        lines += CommandLineTexts::notConvertedHead(failures.size());
        lines += failures;
    }
    lines += renamed;
    if (const qsizetype missing = report.count(PhotoOutcome::Kind::Missing); missing > 0) {
        lines += report.dryRun ? CommandLineTexts::wouldStopAtMissing(missing)
                               : CommandLineTexts::missingMasterHint();
    }
    if (removesOriginals && !report.dryRun && report.count(PhotoOutcome::Kind::Converted) > 0) {
        lines += CommandLineTexts::removedOriginalsHint(report.library);
    }
    return lines;
}
