#include "InfoCommand.h"

#include "CommandLineTexts.h"
#include "Console.h"
#include "Documents.h"
#include "ExitStatus.h"
#include "Interruption.h"
#include "TextLayout.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

QString writableWords(const QString& library, const LibrarySummary& summary)
{
    if (summary.writable) {
        return CommandLineTexts::yes();
    }
    QString why = summary.whyReadOnly;
    why.replace(library, TextLayout::escaped(library));
    return why.isEmpty() ? CommandLineTexts::no() : CommandLineTexts::noBecause(why);
}

QString words(const QString& library, const QString& version, const LibrarySummary& summary)
{
    using CommandLineTexts::countWithBytes;
    using CommandLineTexts::infoRow;
    using enum CommandLineTexts::InfoRow;
    const auto number = [](qint64 count) { return QString::number(count); };
    QList<QStringList> rows{
        {infoRow(Library), TextLayout::escaped(library)},
        {infoRow(Version), TextLayout::printable(version)},
        {infoRow(Photos), number(summary.photos)},
        {infoRow(Rolls), number(summary.rolls)},
        {infoRow(Albums), number(summary.albums)},
        {infoRow(Keywords), number(summary.keywords)},
        {infoRow(Raw), countWithBytes(summary.rawPhotos, summary.rawBytes)},
        {infoRow(Processed), number(summary.processedPhotos)},
        {infoRow(Trash), countWithBytes(summary.trashedPhotos, summary.trashedBytes)},
        {infoRow(Missing),
         CommandLineTexts::countWithVolumes(summary.missing, summary.offlineVolumes)},
        {infoRow(Writable), writableWords(library, summary)},
    };
    const QStringList problems =
        summary.problems.isEmpty() ? QStringList{CommandLineTexts::none()} : summary.problems;
    for (const QString& problem : problems) {
        rows +=
            QStringList{rows.size() == static_cast<int>(Problems) ? infoRow(Problems) : QString(),
                        TextLayout::printable(problem)};
    }
    return TextLayout::table(rows, {TextLayout::Align::Left, TextLayout::Align::Left});
}

} // namespace

InfoCommand::InfoCommand(LibraryOptions libraryOptions, Options options)
    : LibraryCommand(std::move(libraryOptions))
    , m_options(options)
{
}

int InfoCommand::executeWithLibrary(PhotoLibrary& library, const CommandServices& services)
{
    const Result<LibrarySummary> summary =
        library.summary([&services] { return services.interruption.isRequested(); });
    if (services.interruption.isRequested()) {
        return interruptedEarly(services);
    }
    if (!summary.ok()) {
        return failed(summary.error(), services);
    }
    if (m_options.json) {
        services.console.printDocument(
            Documents::text(Documents::info(library.path(), library.version(), summary.value())));
    } else {
        services.console.print(words(library.path(), library.version(), summary.value()));
    }
    return ExitStatus::kDone;
}
