#include "AtomicFile.h"

#include "FileDescriptor.h"

#include <QByteArrayView>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStringList>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

constexpr QByteArrayView kTemporarySuffix(".corvane-new");
/// As many as a number of 32 bits has to the base 36.
constexpr qsizetype kRandomDigits = 7;
/// Longest file name in bytes on the file systems of Linux.
constexpr qsizetype kLongestName = 255;
/// As many links as the kernel follows in one path.
constexpr int kMostLinks = 40;

/// Removes the temporary name at the end of the scope, if it is still there.
class TemporaryName final
{
public:
    explicit TemporaryName(QByteArray path)
        : m_path(std::move(path))
    {
    }

    ~TemporaryName()
    {
        if (!m_path.isEmpty()) {
            ::unlink(m_path.constData());
        }
    }

    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    [[nodiscard]] const char* path() const { return m_path.constData(); }

    void forget() { m_path.clear(); }

private:
    QByteArray m_path;
};

/// The path with its folder free of links, so that a ".." behind a linked folder means what the
/// kernel takes it for.
Result<QByteArray> withRealFolder(const QByteArray& path, const QString& shown)
{
    const qsizetype slash = path.lastIndexOf('/');
    const QByteArray folder = slash < 0 ? QByteArray(".") : path.left(slash + 1);
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(folder.constData(), nullptr),
                                                           &std::free);
    if (!real) {
        return AtomicFile::errorFromErrno(errno, u"write"_s, shown);
    }
    const QByteArray realFolder(real.get());
    return (realFolder == "/" ? QByteArray() : realFolder) + '/' + path.mid(slash + 1);
}

/// The file that a chain of symbolic links leads to; it need not exist.
Result<QByteArray> withoutLinks(const QString& path)
{
    Result<QByteArray> target = withRealFolder(QFile::encodeName(path), path);
    for (int followed = 0; target.ok() && followed < kMostLinks; ++followed) {
        std::array<char, PATH_MAX> link = {};
        const QByteArray current = target.value();
        const ssize_t size = ::readlink(current.constData(), link.data(), link.size());
        if (size < 0) {
            return target;
        }
        const QByteArray content(link.data(), size);
        const QByteArray folder = current.left(current.lastIndexOf('/') + 1);
        target = withRealFolder(content.startsWith('/') ? content : folder + content, path);
    }
    return target.ok() ? AtomicFile::errorFromErrno(ELOOP, u"write"_s, path) : target;
}

/// ".NAME.XXXXXXX.corvane-new" beside the target.
QByteArray temporaryPath(const QByteArray& target)
{
    const QByteArray random = QByteArray::number(QRandomGenerator::system()->generate(), 36)
                                  .rightJustified(kRandomDigits, '0');
    const qsizetype slash = target.lastIndexOf('/');
    const QByteArray name = AtomicFile::nameInTemporary(target.mid(slash + 1));
    return target.left(slash + 1) + '.' + name + '.' + random + kTemporarySuffix.toByteArray();
}

bool writeAll(int descriptor, const QByteArray& bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::write(descriptor, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        done += count < 0 ? 0 : count;
    }
    return true;
}

void copyExtendedAttributes(const char* from, int to)
{
    const ssize_t listSize = ::listxattr(from, nullptr, 0);
    if (listSize <= 0) {
        return;
    }
    std::vector<char> names(static_cast<size_t>(listSize));
    const ssize_t namesSize = ::listxattr(from, names.data(), names.size());
    for (ssize_t start = 0; start < namesSize;) {
        const char* name = names.data() + start;
        const ssize_t size = ::getxattr(from, name, nullptr, 0);
        if (size >= 0) {
            std::vector<char> value(static_cast<size_t>(size));
            const ssize_t got = ::getxattr(from, name, value.data(), value.size());
            if (got >= 0) {
                // Some name spaces only the system writes; those are not ours to keep.
                std::ignore = ::fsetxattr(to, name, value.data(), static_cast<size_t>(got), 0);
            }
        }
        start += static_cast<ssize_t>(qstrlen(name)) + 1;
    }
}

/// Gives the new file what the old one had. Owner and attributes as far as the system lets us; the
/// permissions last, since a change of owner resets some of them.
bool takeOverInto(const struct stat& old, const char* oldPath, int descriptor)
{
    struct stat made = {};
    if (::fstat(descriptor, &made) != 0) {
        return false;
    }
    if (made.st_uid != old.st_uid || made.st_gid != old.st_gid) {
        if (::fchown(descriptor, old.st_uid, old.st_gid) != 0) {
            std::ignore = ::fchown(descriptor, static_cast<uid_t>(-1), old.st_gid);
        }
    }
    copyExtendedAttributes(oldPath, descriptor);
    return ::fchmod(descriptor, old.st_mode & 07777U) == 0;
}

/// Owner and group that a new entry of the folder gets where the administrator makes it: those of
/// the folder, so that whom a library belongs to can still change it. Otherwise nothing.
std::optional<std::pair<uid_t, gid_t>> ownerOfNewEntries(const QByteArray& folder)
{
    struct stat found = {};
    if (::geteuid() != 0 || ::stat(folder.constData(), &found) != 0 || found.st_uid == 0) {
        return std::nullopt;
    }
    return std::pair(found.st_uid, found.st_gid);
}

/// Renames without ever replacing; file systems that cannot do that in one step get a second name
/// for the file and lose the first.
bool renameRefusing(const char* from, const char* to)
{
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    return ::link(from, to) == 0;
}

bool flushDescriptor(int descriptor)
{
    while (::fsync(descriptor) != 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

/// For a flush: to some servers one of a file that is not open for writing is not passed on.
int openToFlush(const QByteArray& path)
{
    const int file = ::open(path.constData(), O_RDWR | O_CLOEXEC);
    const bool isProtected = errno == EACCES || errno == EROFS || errno == ETXTBSY;
    return file < 0 && isProtected ? ::open(path.constData(), O_RDONLY | O_CLOEXEC) : file;
}

/// What stands at the target: nothing, or a regular file that may be replaced.
Result<std::optional<struct stat>>
inspectTarget(const QByteArray& target, const QString& path, AtomicFile::Existing existing)
{
    struct stat found = {};
    if (::lstat(target.constData(), &found) != 0) {
        if (errno == ENOENT) {
            return std::optional<struct stat>();
        }
        return AtomicFile::errorFromErrno(errno, u"write"_s, path);
    }
    if (existing == AtomicFile::Existing::Refuse) {
        return AtomicFile::errorFromErrno(EEXIST, u"write"_s, path);
    }
    if (!S_ISREG(found.st_mode)) {
        return Error{ErrorCode::NotWritable,
                     u"Could not write \"%1\": it is no regular file"_s.arg(path)};
    }
    if (::faccessat(AT_FDCWD, target.constData(), W_OK, AT_EACCESS) != 0) {
        return AtomicFile::errorFromErrno(errno, u"write"_s, path);
    }
    return std::optional<struct stat>(found);
}

} // namespace

Error AtomicFile::errorFromErrno(int errorNumber, const QString& action, const QString& path)
{
    ErrorCode code = ErrorCode::Internal;
    switch (errorNumber) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        code = ErrorCode::OutOfSpace;
        break;
    case ENOENT:
    case ENOTDIR:
        code = ErrorCode::NotFound;
        break;
    case EACCES:
    case EPERM:
    case EROFS:
    case EEXIST:
    case EISDIR:
    case ELOOP:
    case ENAMETOOLONG:
    case EIO:
    case ETXTBSY:
        code = ErrorCode::NotWritable;
        break;
    case EBUSY:
        code = ErrorCode::InUse;
        break;
    default:
        break;
    }
    const QString reason = QString::fromStdString(std::generic_category().message(errorNumber));
    return Error{code, u"Could not %1 \"%2\": %3"_s.arg(action, path, reason)};
}

QByteArray AtomicFile::nameInTemporary(const QByteArray& name)
{
    constexpr qsizetype kAroundIt = 1 + 1 + kRandomDigits + kTemporarySuffix.size();
    qsizetype size = qMin(name.size(), kLongestName - kAroundIt);
    // Qt lists no name that ends within a character.
    const auto isWithinCharacter = [](char byte) { // of UTF-8
        return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
    };
    while (size > 0 && size < name.size() && isWithinCharacter(name.at(size))) {
        --size;
    }
    return name.left(size);
}

Result<void> AtomicFile::write(const QString& path, const QByteArray& bytes, Existing existing)
{
    const QString action = u"write"_s;
    const Result<QByteArray> resolved = withoutLinks(path);
    if (!resolved.ok()) {
        return resolved.error();
    }
    const QByteArray& target = resolved.value();
    const Result<std::optional<struct stat>> old = inspectTarget(target, path, existing);
    if (!old.ok()) {
        return old.error();
    }

    TemporaryName temporary(temporaryPath(target));
    // A file that replaces a private one is private from its first byte.
    const mode_t mode = old.value().has_value() ? 0600 : 0666;
    FileDescriptor file(::open(temporary.path(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file.isOpen()) {
        const int errorNumber = errno;
        temporary.forget(); // It may be another's.
        return errorFromErrno(errorNumber, action, path);
    }
    if (!writeAll(file.number(), bytes)) {
        return errorFromErrno(errno, action, path);
    }
    if (const auto owner = ownerOfNewEntries(target.left(target.lastIndexOf('/') + 1));
        owner && !old.value().has_value()) {
        std::ignore = ::fchown(file.number(), owner->first, owner->second);
    }
    if (old.value().has_value() && !takeOverInto(*old.value(), target.constData(), file.number())) {
        return errorFromErrno(errno, action, path);
    }
    if (!flushDescriptor(file.number()) || !file.close()) {
        return errorFromErrno(errno, action, path);
    }
    const bool renamed = existing == Existing::Refuse
                             ? renameRefusing(temporary.path(), target.constData())
                             : ::rename(temporary.path(), target.constData()) == 0;
    if (!renamed) {
        return errorFromErrno(errno, action, path);
    }
    return flushFolder(QFile::decodeName(target.left(target.lastIndexOf('/') + 1)));
}

Result<void> AtomicFile::makeFolder(const QString& path)
{
    QStringList missing;
    QString folder = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    while (!QFileInfo::exists(folder) && !QDir(folder).isRoot()) {
        missing.prepend(folder);
        folder = QFileInfo(folder).absolutePath();
    }
    if (missing.isEmpty() && !QFileInfo(folder).isDir()) {
        return errorFromErrno(ENOTDIR, u"make the folder"_s, path);
    }
    for (const QString& name : missing) {
        // Another program may have made it in between, which is as good.
        if (::mkdir(QFile::encodeName(name).constData(), 0777) != 0 && errno != EEXIST) {
            return errorFromErrno(errno, u"make the folder"_s, name);
        }
        giveToOwnerOfFolder(name);
        Result<void> flushed = flushFolder(QFileInfo(name).absolutePath());
        if (!flushed.ok()) {
            return flushed;
        }
    }
    return {};
}

Result<void> AtomicFile::takeOver(const QString& from, const QString& to)
{
    const QString action = u"set owner and permissions of"_s;
    const QByteArray source = QFile::encodeName(from);
    struct stat found = {};
    if (::stat(source.constData(), &found) != 0) {
        return errorFromErrno(errno, action, to);
    }
    const FileDescriptor target(::open(QFile::encodeName(to).constData(), O_RDONLY | O_CLOEXEC));
    if (!target.isOpen() || !takeOverInto(found, source.constData(), target.number())) {
        return errorFromErrno(errno, action, to);
    }
    return {};
}

void AtomicFile::giveToOwnerOfFolder(const QString& path)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
    if (const auto owner = ownerOfNewEntries(folder)) {
        std::ignore = ::lchown(QFile::encodeName(path).constData(), owner->first, owner->second);
    }
}

Result<void> AtomicFile::flushFile(const QString& path)
{
    const FileDescriptor file(openToFlush(QFile::encodeName(path)));
    return file.isOpen() && flushDescriptor(file.number())
               ? Result<void>()
               : errorFromErrno(errno, u"write"_s, path);
}

Result<void> AtomicFile::flushFolder(const QString& path)
{
    const FileDescriptor folder(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        return errorFromErrno(errno, u"flush the folder"_s, path);
    }
    // Some network file systems cannot flush a folder; their server orders the changes itself.
    if (!flushDescriptor(folder.number()) && errno != EINVAL && errno != ENOTSUP) {
        return errorFromErrno(errno, u"flush the folder"_s, path);
    }
    return {};
}

Result<void> AtomicFile::flushWithParents(const QString& path)
{
    QString folder = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    struct stat below = {};
    if (::stat(QFile::encodeName(folder).constData(), &below) != 0) {
        return errorFromErrno(errno, u"flush the folder"_s, path);
    }
    Result<void> flushed = flushFolder(folder);
    while (flushed.ok() && !QDir(folder).isRoot()) {
        folder = QFileInfo(folder).absolutePath();
        const QByteArray name = QFile::encodeName(folder);
        struct stat found = {};
        // The folder that a file system is mounted on lies on another.
        if (::stat(name.constData(), &found) != 0 || found.st_dev != below.st_dev ||
            ::faccessat(AT_FDCWD, name.constData(), R_OK, AT_EACCESS) != 0) {
            break;
        }
        flushed = flushFolder(folder);
    }
    return flushed;
}
