#include "ListCommand.h"

#include "Console.h"
#include "Documents.h"
#include "ExitStatus.h"
#include "PhotoSelection.h"
#include "TextLayout.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// Empty where the library does not know both sides.
QString pixels(const PhotoFacts& photo)
{
    return photo.unknown.width || photo.unknown.height
               ? QString()
               : u"%1x%2"_s.arg(photo.width).arg(photo.height);
}

QStringList rowOf(const PhotoFacts& photo)
{
    return {
        QString::number(photo.id),
        TextLayout::printable(photo.fileName),
        TextLayout::printable(photo.rollName),
        pixels(photo),
        photo.missing ? u"missing"_s : TextLayout::megabytes(photo.bytes),
        TextLayout::printable(photo.keywords.join(u", "_s)),
    };
}

} // namespace

ListCommand::ListCommand(LibraryOptions libraryOptions, Options options)
    : LibraryCommand(std::move(libraryOptions))
    , m_options(std::move(options))
{
}

int ListCommand::executeWithLibrary(PhotoLibrary& library, const CommandServices& services)
{
    const Result<QList<PhotoFacts>> photos = library.photos();
    if (!photos.ok()) {
        return failed(photos.error(), services);
    }
    const ChosenPhotos chosen = PhotoSelection::choose(
        photos.value(), m_options.selection, PhotoSelection::WithoutSelection::All);
    PhotoSelection::explain(chosen, services.console);
    if (m_options.json) {
        Documents::writeList(
            library.path(), library.version(), chosen.photos, [&services](const QByteArray& piece) {
                services.console.printDocument(piece);
            });
        return ExitStatus::kDone;
    }
    QList<QStringList> rows;
    for (const PhotoFacts& photo : chosen.photos) {
        rows += rowOf(photo);
    }
    if (!rows.isEmpty()) {
        using enum TextLayout::Align;
        services.console.print(TextLayout::table(rows, {Right, Left, Left, Right, Right, Left}));
    }
    return ExitStatus::kDone;
}
