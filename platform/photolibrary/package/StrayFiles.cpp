#include "StrayFiles.h"

#include "PackageFiles.h"
#include "Queries.h"
#include "RestoreStaging.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

bool isOfFinder(const QString& path)
{
    return path.section(u'/', -1) == ".DS_Store"_L1;
}

/// Files below a folder of the package, relative to the package.
QStringList filesBelow(const QString& package, const QString& folder)
{
    QStringList files;
    QDirIterator walk(package + u'/' + folder,
                      QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString path = walk.next().mid(package.size() + 1);
        if (!isOfFinder(path)) {
            files.append(path);
        }
    }
    return files;
}

QSet<QString> namesOf(Connection& connection, const char* sql)
{
    const QStringList names = Sql::texts(connection, sql);
    return {names.begin(), names.end()};
}

void addStrangeFolders(const QStringList& files,
                       const QSet<QString>& known,
                       const QSet<QString>& named,
                       QStringList& folders)
{
    for (const QString& file : files) {
        const QString folder = file.section(u'/', 0, -2);
        const bool isSegment = folder == "Thumbnails/Segments"_L1;
        const bool isNamed =
            named.contains(folder) || named.contains(PackageFiles::finishedPath(file));
        if (!isSegment && !isNamed && !known.contains(folder.section(u'/', -1))) {
            folders.append(folder);
        }
    }
}

void addStrangeSidecars(const QString& package,
                        const QString& folder,
                        const QString& suffix,
                        const QSet<QString>& known,
                        QStringList& files)
{
    const QStringList names =
        QDir(package + u'/' + folder).entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& name : names) {
        if (!name.endsWith(suffix) || !known.contains(name.chopped(suffix.size()))) {
            files.append(folder + u'/' + name);
        }
    }
}

/// One that is being written bears its name, or is gone, when it is looked at again.
QStringList
unfinishedIn(const QString& package, const QString& folder, QDirIterator::IteratorFlags flags)
{
    QStringList files;
    QDirIterator walk(folder.isEmpty() ? package : package + u'/' + folder,
                      QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      flags);
    while (walk.hasNext()) {
        walk.next();
        if (PackageFiles::isUnfinished(walk.fileName())) {
            files.append(walk.filePath().mid(package.size() + 1));
        }
    }
    files.removeIf([&package](const QString& file) {
        const QFileInfo entry(package + u'/' + file);
        return !entry.exists() && !entry.isSymLink();
    });
    return files;
}

} // namespace

QStringList StrayFiles::inMasters(Connection& connection, const NamedFiles& namedFiles)
{
    const QStringList files = filesBelow(connection.packagePath(), u"Masters"_s);
    // In this order: of what was found meanwhile, a writer has named each file beforehand and
    // forgets it only once the databases know it.
    const QSet<QString> named = namedFiles.now();
    QSet<QString> known;
    for (const QString& path : Sql::texts(connection, "SELECT imagePath FROM RKMaster")) {
        known.insert(path.normalized(QString::NormalizationForm_C).toCaseFolded());
    }
    const QString root = u"Masters/"_s;
    QStringList strays;
    for (const QString& file : files) {
        const QString relative = file.mid(root.size());
        const QString name = relative.normalized(QString::NormalizationForm_C).toCaseFolded();
        if (!known.contains(name) && !named.contains(PackageFiles::finishedPath(file))) {
            strays << relative;
        }
    }
    // An unfinished file has got its name, or was removed, meanwhile.
    strays.removeIf([&](const QString& relative) {
        const QFileInfo entry(connection.packagePath() + u'/' + root + relative);
        return !entry.exists() && !entry.isSymLink();
    });
    strays.sort();
    return strays;
}

QStringList StrayFiles::foldersOfNoPhoto(Connection& connection, const NamedFiles& namedFiles)
{
    const QString& package = connection.packagePath();
    const QStringList pictures =
        filesBelow(package, u"Previews"_s) + filesBelow(package, u"Thumbnails"_s);
    const QStringList sidecars = filesBelow(package, u"Database/Versions"_s);
    // In this order: see inMasters().
    const QSet<QString> named = namedFiles.now();
    QStringList folders;
    addStrangeFolders(pictures, namesOf(connection, "SELECT uuid FROM RKVersion"), named, folders);
    addStrangeFolders(sidecars, namesOf(connection, "SELECT uuid FROM RKMaster"), named, folders);
    folders.removeDuplicates();
    folders.sort();
    return folders;
}

QStringList StrayFiles::sidecarsOfNothing(Connection& connection)
{
    const QString& package = connection.packagePath();
    QStringList files;
    addStrangeSidecars(package,
                       u"Database/Albums"_s,
                       u".apalbum"_s,
                       namesOf(connection, "SELECT uuid FROM RKAlbum"),
                       files);
    addStrangeSidecars(package,
                       u"Database/Folders"_s,
                       u".apfolder"_s,
                       namesOf(connection, "SELECT uuid FROM RKFolder"),
                       files);
    return files;
}

QStringList StrayFiles::unfinished(const QString& package)
{
    QStringList files = unfinishedIn(package, QString(), QDirIterator::NoIteratorFlags);
    const QStringList folders = QDir(package).entryList(QDir::Dirs | QDir::Hidden |
                                                        QDir::NoSymLinks | QDir::NoDotAndDotDot);
    for (const QString& folder : folders) {
        if (folder != RestoreStaging::kFolder && folder != "Masters"_L1) {
            files << unfinishedIn(package, folder, QDirIterator::Subdirectories);
        }
    }
    for (const QString& left : {QString(RestoreStaging::kFolder), QString(RestoreStaging::kMark)}) {
        if (QFileInfo::exists(package + u'/' + left)) {
            files.append(left);
        }
    }
    files.sort();
    return files;
}
