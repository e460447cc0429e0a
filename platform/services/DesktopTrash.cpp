#include "DesktopTrash.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

// QFile::moveToTrash() of Qt 6.4 takes the current folder for a trash where the user's data folder
// is not there yet, and calls that a success.

namespace
{

constexpr mode_t kPrivateFolder = 0700;
constexpr mode_t kPrivateFile = 0600;
/// A name in the trash keeps room for a number and for ".trashinfo" within the 255 bytes that a
/// file name has.
constexpr qsizetype kLongestName = 230;
constexpr int kMostNames = 10000;

/// A trash folder and how the place of a file is told in it.
struct TrashFolder {
    QByteArray path;
    /// Paths below it are told relative to it; empty: paths are told as they are.
    QByteArray topDirectory;
};

std::optional<struct stat> attributesOf(const QByteArray& path)
{
    struct stat attributes {
    };

    return ::lstat(path.constData(), &attributes) == 0 ? std::optional(attributes) : std::nullopt;
}

QByteArray parentOf(const QByteArray& path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash > 0 ? path.left(slash) : QByteArray("/");
}

/// Whether the folder is there and the user's own, after making it where it was not.
bool makePrivateFolder(const QByteArray& path)
{
    if (::mkdir(path.constData(), kPrivateFolder) != 0 && errno != EEXIST) {
        return false;
    }
    const std::optional<struct stat> attributes = attributesOf(path);
    if (!attributes || !S_ISDIR(attributes->st_mode) || attributes->st_uid != ::getuid()) {
        errno = ENOTDIR;
        return false;
    }
    return true;
}

/// The trash in the user's data folder, made where there is none.
std::optional<TrashFolder> homeTrash()
{
    QString data = qEnvironmentVariable("XDG_DATA_HOME");
    if (!QDir::isAbsolutePath(data)) {
        data = QDir::homePath() + QStringLiteral("/.local/share");
    }
    if (!QDir().mkpath(data)) {
        errno = ENOTDIR;
        return std::nullopt;
    }
    TrashFolder trash{QFile::encodeName(QDir::cleanPath(data)) + "/Trash", {}};
    return makePrivateFolder(trash.path) ? std::optional(trash) : std::nullopt;
}

/// The trash of the volume that the file lies on: the administrator's where there is one that can
/// be trusted, else the user's own at the top of the volume.
std::optional<TrashFolder> volumeTrash(const QByteArray& path, dev_t volume)
{
    QByteArray top = parentOf(path);
    while (top != "/") {
        const std::optional<struct stat> above = attributesOf(parentOf(top));
        if (!above || above->st_dev != volume) {
            break;
        }
        top = parentOf(top);
    }
    const QByteArray prefix = top == "/" ? QByteArray("/") : top + '/';
    const QByteArray user = QByteArray::number(::getuid());
    const std::optional<struct stat> shared = attributesOf(prefix + ".Trash");
    if (shared && S_ISDIR(shared->st_mode) && (shared->st_mode & S_ISVTX) != 0) {
        TrashFolder trash{prefix + ".Trash/" + user, prefix};
        if (makePrivateFolder(trash.path)) {
            return trash;
        }
    }
    TrashFolder trash{prefix + ".Trash-" + user, prefix};
    return makePrivateFolder(trash.path) ? std::optional(trash) : std::nullopt;
}

/// The file's name in the trash: its own, or with a number.
QByteArray nameInTrash(const QByteArray& path, int number)
{
    QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    if (name.size() > kLongestName) {
        qsizetype end = kLongestName;
        constexpr unsigned kContinuationMask = 0xC0;
        constexpr unsigned kContinuation = 0x80;
        while (end > 1 &&
               (static_cast<unsigned char>(name.at(end)) & kContinuationMask) == kContinuation) {
            --end;
        }
        name.truncate(end);
    }
    return number == 1 ? name : name + ' ' + QByteArray::number(number);
}

/// What tells where the file was and when it went.
QByteArray information(const QByteArray& path, const TrashFolder& trash)
{
    const QByteArray place =
        path.startsWith(trash.topDirectory) ? path.mid(trash.topDirectory.size()) : path;
    return "[Trash Info]\nPath=" + place.toPercentEncoding("/") +
           "\nDeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).toLatin1() + '\n';
}

/// Makes the file, which is not there yet. 0, or why not.
int writeNew(const QByteArray& path, const QByteArray& content)
{
    const int descriptor =
        ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivateFile);
    if (descriptor < 0) {
        return errno;
    }
    const ssize_t written =
        ::write(descriptor, content.constData(), static_cast<size_t>(content.size()));
    int status = written < 0 ? errno : 0;
    if (written >= 0 && written < content.size()) {
        status = ENOSPC;
    }
    if (::close(descriptor) != 0 && status == 0) {
        status = errno;
    }
    if (status != 0) {
        ::unlink(path.constData());
    }
    return status;
}

/// Gives the file another place, where nothing may lie yet. 0, or why not.
int rename(const QByteArray& path, const QByteArray& target)
{
    if (::renameat2(AT_FDCWD, path.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0) {
        return 0;
    }
    if (errno != EINVAL) {
        return errno;
    }
    // A file system that cannot promise it.
    if (attributesOf(target)) {
        return EEXIST;
    }
    return ::rename(path.constData(), target.constData()) == 0 ? 0 : errno;
}

int moveInto(const TrashFolder& trash, const QByteArray& path)
{
    if (!makePrivateFolder(trash.path + "/files") || !makePrivateFolder(trash.path + "/info")) {
        return errno;
    }
    int status = EEXIST;
    for (int number = 1; status == EEXIST && number <= kMostNames; ++number) {
        const QByteArray name = nameInTrash(path, number);
        const QByteArray info = trash.path + "/info/" + name + ".trashinfo";
        status = writeNew(info, information(path, trash));
        if (status != 0) {
            continue;
        }
        status = rename(path, trash.path + "/files/" + name);
        if (status != 0) {
            ::unlink(info.constData());
        }
    }
    return status;
}

} // namespace

int DesktopTrash::moveToTrash(const QString& path)
{
    const QFileInfo info(path);
    const QByteArray folder = QFile::encodeName(info.dir().canonicalPath());
    const QByteArray file =
        (folder == "/" ? folder : folder + '/') + QFile::encodeName(info.fileName());
    const std::optional<struct stat> attributes = attributesOf(file);
    if (folder.isEmpty() || info.fileName().isEmpty() || !attributes) {
        return ENOENT;
    }
    std::optional<TrashFolder> trash = homeTrash();
    const std::optional<struct stat> home = trash ? attributesOf(trash->path) : std::nullopt;
    if (!home || home->st_dev != attributes->st_dev) {
        trash = volumeTrash(file, attributes->st_dev);
    }
    return trash ? moveInto(*trash, file) : errno;
}
