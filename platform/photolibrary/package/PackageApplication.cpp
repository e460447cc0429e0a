#include "PackageApplication.h"

#include "AlbumRows.h"
#include "PackageAlbum.h"
#include "PackagePhoto.h"
#include "PhotoRows.h"
#include "Queries.h"

using namespace Qt::StringLiterals;

PackageApplication::PackageApplication(std::shared_ptr<PhotoLibraryPrivate> library, bool isKnown)
    : m_library(std::move(library))
    , m_isKnown(isKnown)
{
}

bool PackageApplication::isRunning()
{
    return m_isKnown && m_library->isOpen();
}

void PackageApplication::requireRunning()
{
    if (!isRunning()) {
        throw ScriptingException(u"NotRunning"_s, u"No photo library is open."_s);
    }
}

QString PackageApplication::version()
{
    requireRunning();
    return m_library->version();
}

QList<ScriptingObjectPtr> PackageApplication::selection()
{
    requireRunning();
    QList<ScriptingObjectPtr> objects;
    const QList<qint64> ids = m_library->selection();
    objects.reserve(ids.size());
    for (const qint64 id : ids) {
        objects.append(std::make_shared<PackagePhoto>(m_library, id));
    }
    return objects;
}

QList<Keyword> PackageApplication::keywords()
{
    requireRunning();
    const QStringList names = m_library->read([](Connection& connection) {
        return Sql::texts(connection, "SELECT name FROM RKKeyword ORDER BY name COLLATE NOCASE");
    });
    QList<Keyword> keywords;
    for (const QString& name : names) {
        keywords.append(Keyword{name});
    }
    return keywords;
}

QList<AlbumPtr> PackageApplication::albums()
{
    requireRunning();
    // What the application's own list shows: regular and smart albums, not the hidden helpers of
    // events and folders.
    const QList<qint64> ids = m_library->read([](Connection& connection) {
        return Sql::integers(connection,
                             "SELECT modelId FROM RKAlbum WHERE albumSubclass IN (2, 3)"
                             " AND isInTrash = 0 AND isHidden = 0 ORDER BY modelId");
    });
    QList<AlbumPtr> albums;
    albums.reserve(ids.size());
    for (const qint64 id : ids) {
        albums.append(std::make_shared<PackageAlbum>(m_library, id, PackageAlbum::Kind::Listed));
    }
    return albums;
}

AlbumPtr PackageApplication::photoLibraryAlbum()
{
    requireRunning();
    const std::optional<qint64> id = m_library->read([](Connection& connection) {
        return Sql::firstInteger(connection,
                                 "SELECT modelId FROM RKAlbum WHERE uuid = 'allPhotosAlbum'");
    });
    return std::make_shared<PackageAlbum>(
        m_library, id.value_or(0), PackageAlbum::Kind::PhotoLibrary);
}

AlbumPtr PackageApplication::lastImportAlbum()
{
    requireRunning();
    const std::optional<qint64> id = m_library->read([](Connection& connection) {
        return Sql::firstInteger(connection,
                                 "SELECT modelId FROM RKAlbum WHERE uuid = 'lastImportAlbum'");
    });
    return std::make_shared<PackageAlbum>(
        m_library, id.value_or(0), PackageAlbum::Kind::LastImport);
}

bool PackageApplication::importing()
{
    requireRunning();
    // importFrom() returns when the photo is in the library.
    return false;
}

void PackageApplication::assignKeywordString(const QString& keyword)
{
    requireRunning();
    const QList<qint64> photos = m_library->selection();
    m_library->write([&](Writer& writer) {
        for (const qint64 photo : photos) {
            PhotoRows::assignKeyword(writer, photo, keyword);
        }
    });
}

void PackageApplication::newAlbumName(const QString& name)
{
    requireRunning();
    m_library->write(
        [&](Writer& writer) { static_cast<void>(AlbumRows::createAlbum(writer, name)); });
}
