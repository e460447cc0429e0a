#include "FuzzLibrary.h"

#include "LibraryBuilder.h"

using namespace Qt::StringLiterals;

FuzzLibrary& FuzzLibrary::instance()
{
    static FuzzLibrary library;
    return library;
}

FuzzLibrary::FuzzLibrary()
{
    if (!m_home.enter() || !m_folder.isValid()) {
        qFatal("there is no folder for a library");
    }
    LibraryBuilder builder(package());
    const qint64 edited = builder.addPhoto(u"Gr\u00FC\u00DFe.jpg"_s, u"Elder Park"_s);
    const qint64 reference = builder.addPhoto(u"far.jpg"_s, u"Elder Park"_s);
    const qint64 pair = builder.addPair(u"pair"_s, u"Beach"_s, LibraryBuilder::Active::Raw);
    const qint64 trashed = builder.addPhoto(u"away.jpg"_s, u"Beach"_s);
    builder.makeEdited(edited);
    builder.makeReference(reference, u"Disk"_s, disk(), u"2011/far.jpg"_s);
    builder.addAlbum(u"Best"_s, {edited, pair});
    builder.addAlbumInFolder(u"Trips"_s, u"Sea"_s, {reference, trashed});
    builder.moveToTrash(trashed);
    Result<std::unique_ptr<Connection>> opened =
        Connection::open(package(), Connection::Mode::Write);
    if (!opened.ok()) {
        qFatal("%s", qPrintable(opened.error().message));
    }
    m_connection = std::move(opened).value();
    m_connection->setVolumeFolders({{u"Disk"_s, disk()}});
}
