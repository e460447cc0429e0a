#include "CheckCommand.h"

#include "CommandLineTexts.h"
#include "Console.h"
#include "Documents.h"
#include "ExitStatus.h"
#include "Interruption.h"
#include "PhotoCheck.h"
#include "PhotoSelection.h"
#include "WalkProgress.h"

#include <QJsonArray>

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

struct BadPhoto {
    PhotoFacts photo;
    QString problem;
};

QJsonObject document(qsizetype checked, const QList<BadPhoto>& bad)
{
    QJsonArray array;
    for (const BadPhoto& item : bad) {
        array += QJsonObject{
            {u"id"_s, item.photo.id},
            {u"filename"_s, item.photo.fileName},
            {u"path"_s, Documents::textOrNull(item.photo.originalPath)},
            {u"problem"_s, item.problem},
        };
    }
    return {{u"checked"_s, checked}, {u"bad"_s, array}};
}

QString words(qsizetype checked, const QList<BadPhoto>& bad)
{
    QString text;
    for (const BadPhoto& item : bad) {
        text +=
            CommandLineTexts::photoWithReason(item.photo.fileName, item.photo.id, item.problem) +
            u'\n';
    }
    return text + CommandLineTexts::checked(checked, bad.size());
}

} // namespace

CheckCommand::CheckCommand(LibraryOptions libraryOptions, Options options)
    : LibraryCommand(std::move(libraryOptions))
    , m_options(std::move(options))
{
}

int CheckCommand::executeWithLibrary(PhotoLibrary& library, const CommandServices& services)
{
    const Result<QList<PhotoFacts>> photos = library.photos();
    if (!photos.ok()) {
        return failed(photos.error(), services);
    }
    const ChosenPhotos chosen = PhotoSelection::choose(
        photos.value(), m_options.selection, PhotoSelection::WithoutSelection::All);
    PhotoSelection::explain(chosen, services.console);
    PhotoSelection::explainNothing(chosen, services.console);

    QList<BadPhoto> bad;
    {
        WalkProgress progress(services.console,
                              chosen.photos.size(),
                              libraryOptions().quiet ? WalkProgress::Show::Nothing
                                                     : WalkProgress::Show::Progress);
        for (const PhotoFacts& photo : chosen.photos) {
            if (services.interruption.isRequested()) {
                return interruptedEarly(services);
            }
            progress.advance(CommandLineTexts::checking(), photo.fileName);
            if (const auto problem = PhotoCheck::problemOf(photo.originalPath, photo.volume)) {
                bad += BadPhoto{photo, problem->sentence};
            }
        }
    }
    if (m_options.json) {
        services.console.printDocument(Documents::text(document(chosen.photos.size(), bad)));
    } else {
        services.console.print(words(chosen.photos.size(), bad));
    }
    return bad.isEmpty() ? ExitStatus::kDone : ExitStatus::kNotAll;
}
