#include "TrashCommand.h"

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

qint64 bytesOf(const QList<PhotoFacts>& photos)
{
    qint64 bytes = 0;
    for (const PhotoFacts& photo : photos) {
        bytes += photo.bytes;
    }
    return bytes;
}

QList<qint64> idsOf(const QList<PhotoFacts>& photos)
{
    QList<qint64> ids;
    for (const PhotoFacts& photo : photos) {
        ids += photo.id;
    }
    return ids;
}

} // namespace

TrashCommand::TrashCommand(LibraryOptions libraryOptions, Options options)
    : LibraryCommand(std::move(libraryOptions))
    , m_options(std::move(options))
{
}

Access TrashCommand::access() const
{
    return m_options.action == Action::List ? Access::Read : Access::Write;
}

std::optional<int> TrashCommand::prepare(const CommandServices& services)
{
    if (m_options.action == Action::Empty && !m_options.yes && !services.console.canAsk()) {
        services.console.say(CommandLineTexts::emptyNeedsYes());
        services.console.say(CommandLineTexts::howToSeeHelp(u"trash"_s));
        return ExitStatus::kUsage;
    }
    return std::nullopt;
}

int TrashCommand::executeWithLibrary(PhotoLibrary& library, const CommandServices& services)
{
    const Result<QList<PhotoFacts>> trashed = library.trashedPhotos();
    if (!trashed.ok()) {
        return failed(trashed.error(), services);
    }
    switch (m_options.action) {
    case Action::List:
        return list(trashed.value(), services);
    case Action::Restore:
        return restore(library, trashed.value(), services);
    case Action::Empty:
        return empty(library, trashed.value(), services);
    }
    Q_UNREACHABLE();
}

int TrashCommand::list(const QList<PhotoFacts>& trashed, const CommandServices& services) const
{
    if (m_options.json) {
        services.console.printDocument(Documents::text(Documents::trash(trashed)));
        return ExitStatus::kDone;
    }
    if (trashed.isEmpty()) {
        services.console.print(CommandLineTexts::trashEmpty());
        return ExitStatus::kDone;
    }
    QList<QStringList> rows;
    for (const PhotoFacts& photo : trashed) {
        rows += QStringList{QString::number(photo.id),
                            TextLayout::printable(photo.fileName),
                            TextLayout::megabytes(photo.bytes)};
    }
    using enum TextLayout::Align;
    services.console.print(TextLayout::table(rows, {Right, Left, Right}) +
                           CommandLineTexts::trashTotal(trashed.size(), bytesOf(trashed)));
    return ExitStatus::kDone;
}

int TrashCommand::restore(PhotoLibrary& library,
                          const QList<PhotoFacts>& trashed,
                          const CommandServices& services) const
{
    QList<qint64> ids;
    for (const PhotoFacts& photo : trashed) {
        if (m_options.ids.isEmpty() || m_options.ids.contains(photo.id)) {
            ids += photo.id;
        }
    }
    for (const qint64 id : m_options.ids) {
        if (!ids.contains(id)) {
            services.console.say(CommandLineTexts::notInTrash(id));
        }
    }
    const Result<int> restored = ids.isEmpty() ? Result<int>(0) : library.restoreFromTrash(ids);
    if (!restored.ok()) {
        return failed(restored.error(), services);
    }
    services.console.print(CommandLineTexts::putBack(restored.value()));
    return ExitStatus::kDone;
}

int TrashCommand::empty(PhotoLibrary& library,
                        const QList<PhotoFacts>& trashed,
                        const CommandServices& services) const
{
    Console& console = services.console;
    if (trashed.isEmpty()) {
        console.print(CommandLineTexts::trashEmpty());
        return ExitStatus::kDone;
    }
    std::optional<QList<qint64>> asked; // none: all that is there
    if (!m_options.yes) {
        asked = idsOf(trashed);
        console.say(CommandLineTexts::askToEmpty(trashed.size(), bytesOf(trashed)));
        const std::optional<QString> answer = console.readLine(services.interruption);
        if (services.interruption.isRequested()) {
            return interruptedEarly(services);
        }
        if (!answer || answer->compare(CommandLineTexts::yes(), Qt::CaseInsensitive) != 0) {
            console.say(CommandLineTexts::notEmptied());
            return ExitStatus::kDone;
        }
    }
    const Result<EmptiedTrash> emptied = library.emptyTrash(asked);
    if (!emptied.ok()) {
        return failed(emptied.error(), services);
    }
    console.print(CommandLineTexts::emptied(emptied.value().photos, emptied.value().bytes));
    return ExitStatus::kDone;
}
