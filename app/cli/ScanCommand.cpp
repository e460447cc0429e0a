#include "ScanCommand.h"

#include "ClosingLines.h"
#include "CommandLineTexts.h"
#include "Console.h"
#include "Documents.h"
#include "DryRun.h"
#include "ExitStatus.h"
#include "Interruption.h"
#include "PhotoSelection.h"
#include "ReportFile.h"
#include "ScanReport.h"
#include "ScanRun.h"
#include "TextLayout.h"
#include "UserDefaults.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

ScanCommand::ScanCommand(LibraryOptions libraryOptions, Options options)
    : LibraryCommand(std::move(libraryOptions))
    , m_options(std::move(options))
{
}

Access ScanCommand::access() const
{
    return m_options.dryRun ? Access::Read : Access::Write;
}

std::optional<int> ScanCommand::prepare(const CommandServices& services)
{
    if (!m_options.report) {
        return std::nullopt;
    }
    const std::optional<QString> obstacle =
        ReportFile(*m_options.report).obstacle(libraryOptions().library);
    if (!obstacle) {
        return std::nullopt;
    }
    services.console.say(*obstacle);
    services.console.say(CommandLineTexts::howToSeeHelp(u"scan"_s));
    return ExitStatus::kUsage;
}

int ScanCommand::executeWithLibrary(PhotoLibrary& library, const CommandServices& services)
{
    const Result<QList<PhotoFacts>> photos = library.photos();
    if (!photos.ok()) {
        return failed(photos.error(), services);
    }
    UserDefaults defaults(libraryOptions().defaultsFile.value_or(UserDefaults::standardFilePath()));
    registerFallbacks(defaults, services.bundle);
    m_options.settings.applyTo(defaults);

    const ChosenPhotos chosen = PhotoSelection::choose(
        photos.value(), m_options.selection, PhotoSelection::WithoutSelection::Raw);
    PhotoSelection::explain(chosen, services.console);
    PhotoSelection::explainNothing(chosen, services.console);
    sayHints(chosen.photos, defaults, services);
    return m_options.dryRun ? dryRun(library.path(), chosen.photos, defaults, services)
                            : scan(library, chosen.photos, defaults, services);
}

int ScanCommand::interruptedEarly(const CommandServices& services) const
{
    const int status = LibraryCommand::interruptedEarly(services);
    ScanReport report;
    report.library = QFileInfo(libraryOptions().library).absoluteFilePath();
    report.dryRun = m_options.dryRun;
    return finish(report, status, services);
}

int ScanCommand::scan(PhotoLibrary& library,
                      const QList<PhotoFacts>& selection,
                      UserDefaults& defaults,
                      const CommandServices& services)
{
    QList<qint64> ids;
    for (const PhotoFacts& photo : selection) {
        ids += photo.id;
    }
    using Summary = TerminalPresenter::Summary;
    ScanRun run(library,
                defaults,
                services,
                {.showProgress = !libraryOptions().quiet,
                 .summary = reportTakesOutput() ? Summary::Error : Summary::Output});
    const ScanRun::Ending ending = run.run(ids);

    ScanReport report = ScanReport::before(library.path(), selection);
    report.stopped = ending.stopped;
    for (const PhotoOutcome& outcome : ending.outcomes) {
        report.photos[outcome.selectionIndex].outcome = outcome;
    }
    // Also after an interruption the catalogues follow before the report says how it ended.
    const Result<void> closed = library.close();
    for (const QString& line : ClosingLines::of(report, defaults.boolValue(u"TrashEnabled"_s))) {
        services.console.say(line);
    }
    int status = ending.finished && report.isComplete() ? ExitStatus::kDone : ExitStatus::kNotAll;
    if (!ending.finished && services.interruption.isRequested()) {
        services.console.say(CommandLineTexts::scanInterrupted());
        status = ExitStatus::kInterrupted;
    }
    if (!closed.ok()) {
        const int notClosed = failed(closed.error(), services);
        // That the scan was stopped says more.
        status = status == ExitStatus::kDone ? notClosed : status;
    }
    return finish(report, status, services);
}

int ScanCommand::dryRun(const QString& library,
                        const QList<PhotoFacts>& selection,
                        const UserDefaults& defaults,
                        const CommandServices& services)
{
    Console& console = services.console;
    const DryRun::Findings findings = DryRun::walk(
        library,
        selection,
        defaults,
        console,
        services.interruption,
        libraryOptions().quiet ? WalkProgress::Show::Nothing : WalkProgress::Show::Progress);
    const ScanReport& report = findings.report;
    if (findings.interrupted) {
        return finish(report, LibraryCommand::interruptedEarly(services), services);
    }
    const QString summary =
        CommandLineTexts::dryRunSummary(report.count(PhotoOutcome::Kind::Converted),
                                        report.photos.size()) +
        u'\n' +
        CommandLineTexts::dryRunBytes(
            report.originalsBytes(), findings.estimate.lowest, findings.estimate.highest);
    if (reportTakesOutput()) {
        console.say(summary);
    } else {
        console.print(summary);
    }
    for (const QString& line : ClosingLines::of(report, false)) {
        console.say(line);
    }
    const bool complete = report.isComplete() && !report.photos.isEmpty();
    return finish(report, complete ? ExitStatus::kDone : ExitStatus::kNotAll, services);
}

void ScanCommand::sayHints(const QList<PhotoFacts>& selection,
                           const UserDefaults& defaults,
                           const CommandServices& services) const
{
    const auto edits = std::ranges::count_if(
        selection, [](const PhotoFacts& photo) { return photo.edited || photo.rotated; });
    if (edits > 0 && defaults.boolValue(u"ProcessingOption"_s)) {
        services.console.say(CommandLineTexts::editsNotShown(edits));
    }
    const auto others =
        std::ranges::count_if(selection, [](const PhotoFacts& photo) { return !photo.raw; });
    if (others > 0 && m_options.selection.all) {
        services.console.say(CommandLineTexts::encodedAgain(others));
    }
}

int ScanCommand::finish(const ScanReport& report, int status, const CommandServices& services) const
{
    if (!m_options.report) {
        return status;
    }
    const Result<void> written =
        ReportFile(*m_options.report).write(Documents::text(report.document()), services.console);
    if (written.ok()) {
        return status;
    }
    services.console.say(CommandLineTexts::reportNotWritten(*m_options.report));
    services.console.say(TextLayout::escaped(written.error().message));
    return status == ExitStatus::kDone ? ExitStatus::kNotAll : status;
}

bool ScanCommand::reportTakesOutput() const
{
    return m_options.report && ReportFile(*m_options.report).isStandardOutput();
}
