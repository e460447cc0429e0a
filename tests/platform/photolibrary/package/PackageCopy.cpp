#include "PackageCopy.h"

#include "Queries.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

PackageCopy::PackageCopy()
{
    const QString source =
        QStringLiteral(CORVANE_SHARED_DATA) + u"/Test-iPhoto-9.6.1.photolibrary"_s;
    for (const QString& part : {u"Database"_s, u"iLifeShared"_s}) {
        if (!copyTree(source + u'/' + part, package() + u'/' + part)) {
            return;
        }
    }
    for (const QString& file : {u"AlbumData.xml"_s, u"Info.plist"_s}) {
        const QString copy = package() + u'/' + file;
        if (!QFile::copy(source + u'/' + file, copy) ||
            !QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner)) {
            return;
        }
    }
    auto opened = Connection::open(package(), Connection::Mode::Write);
    if (opened.ok()) {
        m_connection = std::move(opened).value();
    }
}

QString PackageCopy::package() const
{
    return m_folder.path() + u"/Real.photolibrary"_s;
}

bool PackageCopy::copyTree(const QString& from, const QString& to)
{
    if (!QFileInfo(from).isDir() || !QDir().mkpath(to)) {
        return false;
    }
    QDirIterator entries(
        from, QDir::Files | QDir::NoSymLinks | QDir::Hidden, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        const QString copy = to + path.mid(from.size());
        if (!QDir().mkpath(QFileInfo(copy).path()) || !QFile::copy(path, copy) ||
            !QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner)) {
            return false;
        }
    }
    return true;
}

Changes PackageCopy::everything()
{
    const auto uuids = [this](const char* sql) {
        const QStringList found = Sql::texts(*m_connection, sql);
        return QSet<QString>(found.begin(), found.end());
    };
    Changes changes;
    changes.masters = uuids("SELECT uuid FROM RKMaster");
    changes.albums = uuids("SELECT uuid FROM RKAlbum");
    changes.folders = uuids("SELECT uuid FROM RKFolder");
    changes.keywords = true;
    changes.adminData = true;
    changes.catalogues = true;
    return changes;
}

QMap<QString, QByteArray> PackageCopy::files() const
{
    QMap<QString, QByteArray> found;
    QDirIterator entries(package(),
                         {u"*.ap[mvaf]*"_s, u"*.plist"_s, u"*.xml"_s},
                         QDir::Files,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        if (!path.contains("/History/"_L1)) {
            found.insert(path.mid(package().size() + 1), bytes(path));
        }
    }
    return found;
}

QByteArray PackageCopy::bytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
