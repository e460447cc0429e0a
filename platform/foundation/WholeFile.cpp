#include "WholeFile.h"

#include "FileDescriptor.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

using namespace Qt::StringLiterals;

namespace
{

Error notFoundOrUnreadable(const QString& path, int reason)
{
    // Neither is a link to nothing, nor what lies in a folder that is closed to the user.
    const bool isMissing = !QFileInfo::exists(path);
    const QString words = QString::fromStdString(std::generic_category().message(reason));
    return isMissing
               ? Error{ErrorCode::NotFound, u"There is no file \"%1\" (%2)."_s.arg(path, words)}
               : Error{ErrorCode::Unreadable,
                       u"\"%1\" cannot be read (%2): check its permissions."_s.arg(path, words)};
}

Result<qint64> sizeOf(const FileDescriptor& file, const QString& path, qint64 mostBytes)
{
    struct stat status = {};
    if (::fstat(file.number(), &status) != 0) {
        return notFoundOrUnreadable(path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return Error{ErrorCode::Unreadable,
                     u"\"%1\" is no plain file, so it is not read: put a plain file in its place, "
                     "or remove it."_s.arg(path)};
    }
    if (status.st_size > mostBytes) {
        return Error{
            ErrorCode::Unreadable,
            u"\"%1\" has %2 bytes, more than any file of its kind, so it is not read: "
            "restore it from a backup, or remove it."_s.arg(path, QString::number(status.st_size))};
    }
    return status.st_size;
}

/// What is compiled into the program.
Result<QByteArray> ofResource(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? Result<QByteArray>(file.readAll())
                                          : notFoundOrUnreadable(path, ENOENT);
}

} // namespace

Result<QByteArray> WholeFile::read(const QString& path, qint64 mostBytes)
{
    if (path.startsWith(":/"_L1)) {
        return ofResource(path);
    }
    // Without O_NONBLOCK, opening a pipe waits for somebody who writes to it.
    const FileDescriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen()) {
        return notFoundOrUnreadable(path, errno);
    }
    const Result<qint64> size = sizeOf(file, path, mostBytes);
    if (!size.ok()) {
        return size.error();
    }
    QByteArray bytes(size.value(), Qt::Uninitialized);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::read(file.number(), bytes.data() + done, static_cast<size_t>(bytes.size() - done));
        if (count < 0 && errno != EINTR) {
            return notFoundOrUnreadable(path, errno);
        }
        if (count == 0) { // it has become shorter meanwhile
            break;
        }
        done += qMax(count, ssize_t{0});
    }
    bytes.truncate(done);
    return bytes;
}
