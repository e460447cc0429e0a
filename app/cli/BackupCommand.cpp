#include "BackupCommand.h"

#include "CareTexts.h"
#include "CommandLineTexts.h"
#include "Console.h"
#include "Documents.h"
#include "ExitStatus.h"
#include "LibraryBackups.h"
#include "LibraryFailure.h"
#include "TextLayout.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

QStringList rowOf(const LibraryBackup& backup)
{
    return {backup.name,
            CareTexts::localTime(backup.moment),
            backup.photos ? CareTexts::photosOfBackup(*backup.photos) : CareTexts::damagedBackup(),
            TextLayout::megabytes(backup.bytes)};
}

} // namespace

BackupCommand::BackupCommand(LibraryOptions libraryOptions, Options options)
    : m_libraryOptions(std::move(libraryOptions))
    , m_options(std::move(options))
{
}

int BackupCommand::execute(const CommandServices& services)
{
    switch (m_options.action) {
    case Action::Make:
        return make(services);
    case Action::List:
        return list(services);
    case Action::Restore:
        return restore(services);
    }
    Q_UNREACHABLE();
}

int BackupCommand::make(const CommandServices& services) const
{
    const QString& library = m_libraryOptions.library;
    const Result<LibraryBackup> made = LibraryBackups::make(library);
    if (!made.ok()) {
        return LibraryFailure::tell(made.error(), library, services);
    }
    if (m_options.json) {
        services.console.printDocument(Documents::text(Documents::backup(made.value())));
    } else {
        services.console.print(
            CommandLineTexts::backupMade(made.value().name, made.value().bytes, made.value().path));
    }
    return ExitStatus::kDone;
}

int BackupCommand::list(const CommandServices& services) const
{
    const QString& library = m_libraryOptions.library;
    const Result<QList<LibraryBackup>> backups = LibraryBackups::list(library);
    if (!backups.ok()) {
        return LibraryFailure::tell(backups.error(), library, services);
    }
    if (m_options.json) {
        services.console.printDocument(Documents::text(Documents::backups(backups.value())));
        return ExitStatus::kDone;
    }
    QList<QStringList> rows;
    for (const LibraryBackup& backup : backups.value()) {
        rows += rowOf(backup);
    }
    using enum TextLayout::Align;
    services.console.print(rows.isEmpty() ? CareTexts::noBackups()
                                          : TextLayout::table(rows, {Left, Left, Right, Right}));
    return ExitStatus::kDone;
}

int BackupCommand::restore(const CommandServices& services) const
{
    const QString& library = m_libraryOptions.library;
    for (const QString& warning : LibraryBackups::warnings(library)) {
        LibraryFailure::say(warning, library, services);
    }
    const Result<LibraryBackups::Restored> restored =
        LibraryBackups::restore(library, m_options.date, m_libraryOptions.afterCrash);
    if (!restored.ok()) {
        return LibraryFailure::tell(restored.error(), library, services);
    }
    const LibraryBackups::Restored& done = restored.value();
    Console& console = services.console;
    for (const QString& lagging : done.lagging) {
        LibraryFailure::say(lagging, library, services);
    }
    const int status = done.lagging.isEmpty() ? ExitStatus::kDone : ExitStatus::kNotAll;
    if (m_options.json) {
        console.printDocument(Documents::text(Documents::restored(done)));
        return status;
    }
    console.print(CommandLineTexts::backupRestored(
        done.from.name, CareTexts::localTime(done.from.moment), done.before));
    if (!done.kept.isEmpty()) {
        console.print(CareTexts::filesKept(done.kept.size()));
        for (const QString& file : done.kept) {
            console.print(u"  "_s + TextLayout::escaped(file));
        }
    }
    console.print(CommandLineTexts::verifyAfterRestore(library));
    return status;
}
