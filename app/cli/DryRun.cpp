#include "DryRun.h"

#include "CommandLineTexts.h"
#include "Console.h"
#include "Interruption.h"
#include "PhotoCheck.h"
#include "Texts.h"
#include "UserDefaults.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

PhotoOutcome::Kind kindOf(const PhotoCheck::Problem& problem)
{
    switch (problem.kind) {
    case PhotoCheck::Problem::Kind::Missing:
        return PhotoOutcome::Kind::Missing;
    case PhotoCheck::Problem::Kind::Unsupported:
        return PhotoOutcome::Kind::Unsupported;
    case PhotoCheck::Problem::Kind::Damaged:
        return PhotoOutcome::Kind::Failed;
    }
    Q_UNREACHABLE();
}

PhotoOutcome outcomeOf(const PhotoFacts& photo, const QString& source)
{
    PhotoOutcome outcome;
    outcome.photoId = photo.id;
    outcome.source = source;
    const std::optional<PhotoCheck::Problem> problem = PhotoCheck::problemOf(source, photo.volume);
    if (problem) {
        outcome.kind = kindOf(*problem);
        outcome.reason = problem->sentence;
    } else if (photo.height == 0) {
        outcome.kind = PhotoOutcome::Kind::Unsupported;
        outcome.reason = CommandLineTexts::noHeight();
    } else if (photo.losesKeyword) {
        outcome.kind = PhotoOutcome::Kind::Failed;
        outcome.reason = Texts::keywordLost(source);
    } else {
        outcome.kind = PhotoOutcome::Kind::Converted;
        outcome.originalBytes = QFileInfo(source).size();
    }
    return outcome;
}

} // namespace

DryRun::Findings DryRun::walk(const QString& library,
                              const QList<PhotoFacts>& photos,
                              const UserDefaults& settings,
                              Console& console,
                              const Interruption& interruption,
                              WalkProgress::Show show)
{
    const bool originals = settings.boolValue(u"ProcessingOption"_s);
    Findings findings;
    findings.report = ScanReport::before(library, photos);
    findings.report.dryRun = true;
    WalkProgress progress(console, photos.size(), show);
    for (qsizetype i = 0; i < photos.size(); ++i) {
        if (interruption.isRequested()) {
            findings.interrupted = true;
            break;
        }
        const PhotoFacts& photo = photos.at(i);
        progress.advance(CommandLineTexts::checking(), photo.fileName);
        PhotoOutcome& outcome = findings.report.photos[i].outcome;
        outcome = outcomeOf(photo, originals ? photo.originalPath : photo.imagePath);
        if (outcome.kind == PhotoOutcome::Kind::Converted) {
            const JpegEstimate::Range range =
                JpegEstimate::bytes({photo.width, photo.height}, settings);
            findings.estimate.lowest += range.lowest;
            findings.estimate.highest += range.highest;
        }
    }
    return findings;
}
