#include "PackageFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace
{

/// AtomicFile's names of files that are being written: ".NAME.XXXXXX.corvane-new".
constexpr QLatin1StringView kUnfinishedSuffix(".corvane-new");

QString absolute(const QString& package, const QString& relativePath)
{
    return package + u'/' + relativePath;
}

bool isLinkOrFile(const QFileInfo& entry)
{
    return entry.isSymLink() || entry.isFile();
}

/// Folders from `folder` up to, but without, the package's first level.
QStringList withParents(const QString& folder)
{
    QStringList all;
    for (QString current = folder; current.contains(u'/'); current = current.section(u'/', 0, -2)) {
        all << current;
    }
    return all;
}

bool removeFolder(const QString& path)
{
    // Depth is known: a photo's folder holds files, at most one level of folders.
    QDir folder(path);
    const QFileInfoList entries =
        folder.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    bool allGone = true;
    for (const QFileInfo& entry : entries) {
        const bool gone =
            isLinkOrFile(entry) ? QFile::remove(entry.filePath()) : removeFolder(entry.filePath());
        allGone = gone && allGone;
    }
    return QDir().rmdir(path) && allGone;
}

} // namespace

bool PackageFiles::isInside(const QString& relativePath)
{
    if (relativePath.isEmpty() || relativePath.startsWith(u'/') ||
        relativePath.contains(QChar(u'\0'))) {
        return false;
    }
    const QStringList parts = relativePath.split(u'/');
    return !parts.contains(u".."_s) && !parts.contains(u"."_s) && !parts.contains(QString());
}

qint64 PackageFiles::bytesOf(const QString& package, const QString& relativePath)
{
    if (!isInside(relativePath)) {
        return 0;
    }
    const QFileInfo entry(absolute(package, relativePath));
    if (isLinkOrFile(entry)) {
        return entry.isSymLink() ? 0 : entry.size();
    }
    qint64 bytes = 0;
    QDirIterator walk(entry.filePath(),
                      QDir::Files | QDir::Hidden | QDir::NoSymLinks,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        walk.next();
        bytes += walk.fileInfo().size();
    }
    return bytes;
}

bool PackageFiles::remove(const QString& package, const QString& relativePath)
{
    if (!isInside(relativePath)) {
        return false;
    }
    const QFileInfo entry(absolute(package, relativePath));
    if (isLinkOrFile(entry)) {
        return QFile::remove(entry.filePath());
    }
    return !entry.exists() || removeFolder(entry.filePath());
}

void PackageFiles::removeEmpty(const QString& package, const QStringList& folders)
{
    for (const QString& folder : folders) {
        if (!isInside(folder)) {
            continue;
        }
        for (const QString& current : withParents(folder)) {
            if (!QDir().rmdir(absolute(package, current))) {
                break; // holds something, or was not there
            }
        }
    }
}

bool PackageFiles::removeMade(const QString& package, const QStringList& files)
{
    bool allGone = true;
    QStringList folders;
    for (const QString& file : files) {
        if (!isInside(file)) {
            allGone = false;
            continue;
        }
        const QString folder = file.section(u'/', 0, -2);
        removeUnfinished(package, folder, file.section(u'/', -1));
        allGone = remove(package, file) && allGone;
        folders << folder;
    }
    folders.removeDuplicates();
    removeEmpty(package, folders);
    return allGone;
}

void PackageFiles::removeUnfinished(const QString& package,
                                    const QString& folder,
                                    const QString& name)
{
    if (!folder.isEmpty() && !isInside(folder)) {
        return;
    }
    const QDir place(folder.isEmpty() ? package : absolute(package, folder));
    const QFileInfoList entries =
        place.entryInfoList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        const QString file = entry.fileName();
        if (file.endsWith(kUnfinishedSuffix) &&
            file.startsWith(name.isEmpty() ? u"."_s : u'.' + name + u'.')) {
            QFile::remove(entry.filePath());
        }
    }
}
