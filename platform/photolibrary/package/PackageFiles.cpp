#include "PackageFiles.h"

#include "AtomicFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <sys/stat.h>

#include <filesystem>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;
using PackageFiles::NotRemoved;

namespace fs = std::filesystem;

namespace
{

constexpr qsizetype kMostListed = 20;
/// Levels of a package whose folders may be links to where people keep them.
constexpr qsizetype kLevelsOfWholeFolders = 2;

/// AtomicFile's names of files that are being written: ".NAME.XXXXXX.corvane-new".
constexpr QLatin1StringView kUnfinishedSuffix(".corvane-new");

QString absolute(const QString& package, const QString& relativePath)
{
    return package + u'/' + relativePath;
}

/// Neither is anything outside the package ever touched nor, without one, anything at all.
bool isRefused(const QString& package, const QString& relativePath)
{
    return !QDir::isAbsolutePath(package) || !PackageFiles::isInside(relativePath);
}

bool isWithin(const QString& root, const QString& real)
{
    return real == root || real.startsWith(root + u'/');
}

/// Where the path leads without its links; of what is not there yet, the folder that will hold it.
/// Empty behind a link that leads to nothing.
QString realPlaceOf(const QString& path)
{
    QFileInfo entry(path);
    while (!entry.exists() && !entry.isSymLink()) {
        entry.setFile(entry.path());
    }
    return entry.canonicalFilePath();
}

/// Bytes that go with this name of a file.
qint64 bytesOfName(const QFileInfo& file)
{
    struct stat status = {};
    const bool isKnown = ::lstat(QFile::encodeName(file.filePath()).constData(), &status) == 0;
    return isKnown && S_ISREG(status.st_mode) && status.st_nlink <= 1 ? status.st_size : 0;
}

NotRemoved refused(const QString& relativePath)
{
    return {relativePath, u"it does not lie in the library"_s};
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

/// Removes a file, a link, or a folder with what is in it; adds what stays.
void removeTree(const fs::path& path, const QString& relativePath, QList<NotRemoved>& left)
{
    std::error_code error;
    const qsizetype leftBefore = left.size();
    if (fs::symlink_status(path, error).type() == fs::file_type::directory) {
        fs::directory_iterator entry(path, error);
        while (!error && entry != fs::directory_iterator()) {
            const QByteArray name = QByteArray::fromStdString(entry->path().filename().string());
            removeTree(entry->path(), relativePath + u'/' + QFile::decodeName(name), left);
            entry.increment(error);
        }
    }
    const bool isLastThere = left.size() == leftBefore;
    if (!error && isLastThere) {
        fs::remove(path, error);
    }
    const bool isGone =
        error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
    if (error && !isGone) {
        left.append({relativePath, QString::fromStdString(error.message())});
    }
}

QList<NotRemoved> removeNamed(const QString& package, const QString& relativePath)
{
    QList<NotRemoved> left;
    const QByteArray path = QFile::encodeName(absolute(package, relativePath));
    removeTree(fs::path(path.toStdString()), relativePath, left);
    return left;
}

/// Of a folder, files that `picks` by the names that they were to bear.
template <typename Picks>
void removeUnfinishedThat(const QString& package, const QString& folder, const Picks& picks)
{
    if (!folder.isEmpty() && !PackageFiles::isInside(folder)) {
        return;
    }
    const QDir place(folder.isEmpty() ? package : absolute(package, folder));
    const QFileInfoList entries =
        place.entryInfoList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        const QString file = entry.fileName();
        if (PackageFiles::isUnfinished(file) && picks(PackageFiles::finishedPath(file))) {
            QFile::remove(entry.filePath());
        }
    }
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
        return bytesOfName(entry);
    }
    qint64 bytes = 0;
    QDirIterator walk(entry.filePath(),
                      QDir::Files | QDir::Hidden | QDir::NoSymLinks,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        walk.next();
        bytes += bytesOfName(walk.fileInfo());
    }
    return bytes;
}

bool PackageFiles::leadsOut(const QString& package, const QString& relativePath)
{
    const QString root = QFileInfo(package).canonicalFilePath();
    const QString folder = QFileInfo(absolute(package, relativePath)).path();
    const QString real = QFileInfo(folder).canonicalFilePath(); // empty: it is not there
    return !real.isEmpty() && !isWithin(root, real);
}

Result<void> PackageFiles::mayBeWritten(const QString& package, const QString& relativePath)
{
    const QString path = absolute(package, relativePath);
    if (!isInside(relativePath)) {
        return Error{ErrorCode::NotWritable,
                     u"\"%1\" was not written: it does not lie in the library."_s.arg(path)};
    }
    const QString real = realPlaceOf(path);
    bool isOfLibrary = isWithin(QFileInfo(package).canonicalFilePath(), real);
    const qsizetype folders = qMin(relativePath.count(u'/'), kLevelsOfWholeFolders);
    for (qsizetype level = 0; level < folders && !isOfLibrary && !real.isEmpty(); ++level) {
        const QString folder = absolute(package, relativePath.section(u'/', 0, level));
        isOfLibrary = isWithin(realPlaceOf(folder), real);
    }
    if (isOfLibrary) {
        return {};
    }
    const QString where = real.isEmpty() ? u"to nothing"_s : u"to \"%1\""_s.arg(real);
    return Error{ErrorCode::LeadsOut,
                 u"\"%1\" was not written: a symbolic link leads from there out of the library, "
                 "%2. Put the file or folder itself in the place of the link."_s.arg(path, where)};
}

QList<NotRemoved> PackageFiles::remove(const QString& package, const QString& relativePath)
{
    if (isRefused(package, relativePath) || leadsOut(package, relativePath)) {
        return {refused(relativePath)};
    }
    return removeNamed(package, relativePath);
}

void PackageFiles::removeEmpty(const QString& package, const QStringList& folders)
{
    for (const QString& folder : folders) {
        if (!isInside(folder) || leadsOut(package, folder)) {
            continue;
        }
        for (const QString& current : withParents(folder)) {
            const QString path = absolute(package, current);
            // One that was never made may have parents that were.
            if (!QDir().rmdir(path) && QFileInfo::exists(path)) {
                break;
            }
        }
    }
}

QList<NotRemoved> PackageFiles::flushRemovals(const QString& package, const QStringList& paths)
{
    QSet<QString> folders;
    for (const QString& path : paths) {
        if (isRefused(package, path)) {
            continue;
        }
        // What is left of the folders around it: one that is gone takes its names with it.
        QString folder = path;
        do {
            folder = folder.section(u'/', 0, -2);
        } while (!folder.isEmpty() && !QFileInfo::exists(absolute(package, folder)));
        folders.insert(folder);
    }
    QList<NotRemoved> left;
    for (const QString& folder : std::as_const(folders)) {
        const Result<void> flushed = AtomicFile::flushFolder(absolute(package, folder));
        if (!flushed.ok()) {
            left.append({folder, flushed.error().message});
        }
    }
    return left;
}

QList<NotRemoved> PackageFiles::removeMade(const QString& package, const QStringList& files)
{
    QList<NotRemoved> left;
    QStringList folders;
    for (const QString& file : files) {
        if (isRefused(package, file)) {
            left.append(refused(file));
            continue;
        }
        const QString folder = file.section(u'/', 0, -2);
        removeUnfinished(package, folder, file.section(u'/', -1));
        left.append(removeNamed(package, file));
        folders << folder;
    }
    folders.removeDuplicates();
    removeEmpty(package, folders);
    return left + flushRemovals(package, files);
}

void PackageFiles::removeUnfinished(const QString& package,
                                    const QString& folder,
                                    const QString& name)
{
    const QString begin = QFile::decodeName(AtomicFile::nameInTemporary(QFile::encodeName(name)));
    removeUnfinishedThat(
        package, folder, [&begin](const QString& finished) { return finished == begin; });
}

void PackageFiles::removeAllUnfinished(const QString& package,
                                       const QString& folder,
                                       const QString& ending)
{
    removeUnfinishedThat(
        package, folder, [&ending](const QString& finished) { return finished.endsWith(ending); });
}

bool PackageFiles::isUnfinished(const QString& name)
{
    return name.startsWith(u'.') && name.endsWith(kUnfinishedSuffix);
}

QString PackageFiles::finishedPath(const QString& path)
{
    const QString name = path.section(u'/', -1);
    if (!isUnfinished(name)) {
        return path;
    }
    const QString withMark = name.chopped(kUnfinishedSuffix.size()).mid(1);
    return path.chopped(name.size()) + withMark.section(u'.', 0, -2);
}

QString PackageFiles::listed(const QList<NotRemoved>& notRemoved)
{
    QStringList lines;
    for (const NotRemoved& entry : notRemoved.first(qMin(notRemoved.size(), kMostListed))) {
        lines << u"  %1: %2"_s.arg(entry.path, entry.reason);
    }
    if (notRemoved.size() > kMostListed) {
        lines << u"  and %1 more"_s.arg(notRemoved.size() - kMostListed);
    }
    return lines.join(u'\n');
}
