#include "VerifyCommand.h"

#include "CareTexts.h"
#include "CommandLineTexts.h"
#include "Console.h"
#include "Documents.h"
#include "ExitStatus.h"
#include "Interruption.h"
#include "TextLayout.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

void printAll(const QList<Finding>& findings, Console& console)
{
    for (const Finding& finding : findings) {
        console.print(CommandLineTexts::finding(finding.where, finding.what));
    }
}

qint64 repairableOf(const QList<Finding>& findings)
{
    return std::count_if(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.repairable;
    });
}

} // namespace

VerifyCommand::VerifyCommand(LibraryOptions libraryOptions, Options options)
    : LibraryCommand(std::move(libraryOptions))
    , m_options(options)
{
}

Access VerifyCommand::access() const
{
    return m_options.repair ? Access::Write : Access::Read;
}

int VerifyCommand::executeWithLibrary(PhotoLibrary& library, const CommandServices& services)
{
    return m_options.repair ? repair(library, services) : verify(library, services);
}

int VerifyCommand::verify(PhotoLibrary& library, const CommandServices& services) const
{
    const Result<QList<Finding>> found =
        library.verify([&services] { return services.interruption.isRequested(); });
    if (services.interruption.isRequested()) {
        return interruptedEarly(services);
    }
    if (!found.ok()) {
        return failed(found.error(), services);
    }
    const QList<Finding>& findings = found.value();
    if (m_options.json) {
        services.console.printDocument(Documents::text(Documents::verify(findings)));
    } else {
        printAll(findings, services.console);
        services.console.print(
            CommandLineTexts::verified(findings.size(), repairableOf(findings), library.path()));
    }
    return findings.isEmpty() ? ExitStatus::kDone : ExitStatus::kNotAll;
}

int VerifyCommand::repair(PhotoLibrary& library, const CommandServices& services) const
{
    const Result<RepairReport> repaired =
        library.repair([&services] { return services.interruption.isRequested(); });
    if (!repaired.ok()) {
        return repaired.error().code == ErrorCode::Interrupted ? interruptedEarly(services)
                                                               : failed(repaired.error(), services);
    }
    const RepairReport& report = repaired.value();
    Console& console = services.console;
    if (m_options.json) {
        console.printDocument(Documents::text(Documents::repair(report)));
    } else {
        printAll(report.mended, console);
        console.print(CommandLineTexts::mended(report.mended.size(), report.backup));
        printAll(report.left, console);
        console.print(report.stopped ? CareTexts::notMendedYet(report.left.size())
                                     : CareTexts::leftAsItWas(report.left.size()));
    }
    // What made the repair fail makes the closing fail as well; it is told once.
    const Result<void> closed = library.close();
    for (const QString& failure : report.failures) {
        if (closed.ok() || failure != closed.error().message) {
            console.say(TextLayout::printable(failure));
        }
    }
    if (!closed.ok()) {
        return failed(closed.error(), services);
    }
    if (services.interruption.isRequested()) {
        return interruptedEarly(services);
    }
    const bool isAllWell = report.left.isEmpty() && report.failures.isEmpty() && !report.stopped;
    return isAllWell ? ExitStatus::kDone : ExitStatus::kNotAll;
}
