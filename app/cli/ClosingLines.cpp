#include "ClosingLines.h"

#include "CommandLineTexts.h"
#include "ScanClosing.h"
#include "ScanReport.h"

using namespace Qt::StringLiterals;

QStringList ClosingLines::of(const ScanReport& report, bool removesOriginals)
{
    const ScanClosing closing = ScanClosing::of(report.photos);
    QStringList lines;
    if (!closing.notConverted.isEmpty()) {
        lines += CommandLineTexts::notConvertedHead(closing.notConverted.size());
    }
    for (const ScannedPhoto& photo : closing.notConverted) {
        lines += u"  "_s +
                 CommandLineTexts::photoWithReason(photo.filename, photo.id, photo.outcome.reason);
    }
    for (const ScannedPhoto& photo : closing.otherNames) {
        lines += CommandLineTexts::otherName(photo.filename, photo.id, photo.outcome.importedAs);
    }
    if (const qsizetype missing = report.count(PhotoOutcome::Kind::Missing); missing > 0) {
        lines += report.dryRun ? CommandLineTexts::wouldStopAtMissing(missing)
                               : CommandLineTexts::missingMasterHint();
    }
    if (removesOriginals && !report.dryRun && report.count(PhotoOutcome::Kind::Converted) > 0) {
        lines += CommandLineTexts::removedOriginalsHint(report.library);
    }
    return lines;
}
