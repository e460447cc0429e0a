#include "LibraryLock.h"

#include "AtomicFile.h"
#include "FileLocks.h"
#include "StateFolder.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QSysInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

using namespace Qt::StringLiterals;

namespace
{

constexpr mode_t kPrivate = 0600;
constexpr int kLongestHolder = 512;

/// "process 4711 on host ".
QString onThisHost(qint64 process)
{
    return u"process %1 on %2 "_s.arg(process).arg(QSysInfo::machineHostName());
}

/// "process 4711 on host since 2026-11-21 10:00:00".
QString since(qint64 process, const QDateTime& moment)
{
    return onThisHost(process) + "since "_L1 + moment.toString(u"yyyy-MM-dd HH:mm:ss"_s);
}

QByteArray ownName()
{
    return since(QCoreApplication::applicationPid(), QDateTime::currentDateTime()).toUtf8();
}

QString holderIn(int descriptor)
{
    QByteArray text(kLongestHolder, '\0');
    const ssize_t count = ::pread(descriptor, text.data(), static_cast<size_t>(text.size()), 0);
    return QString::fromUtf8(text.left(count > 0 ? count : 0)).trimmed();
}

bool writeHolder(int descriptor, const QByteArray& holder)
{
    return ::ftruncate(descriptor, 0) == 0 &&
           ::pwrite(descriptor, holder.constData(), static_cast<size_t>(holder.size()), 0) ==
               holder.size();
}

/// Takes the lock, waiting as long as a reader's look at its holder may last. Returns 0, or errno:
/// EWOULDBLOCK where somebody holds it, anything else where the file system gives none.
int takeLock(int descriptor)
{
    constexpr int kAttempts = 5;
    constexpr std::chrono::milliseconds kPause{20};
    for (int attempt = 1; ::flock(descriptor, LOCK_EX | LOCK_NB) != 0; ++attempt) {
        if (attempt == kAttempts || (errno != EWOULDBLOCK && errno != EINTR)) {
            return errno;
        }
        std::this_thread::sleep_for(kPause);
    }
    return 0;
}

Error heldBy(const QString& package, const QString& holder)
{
    return {ErrorCode::InUse,
            u"Another Corvane writes to the library \"%1\" (%2): wait for it to end."_s.arg(
                package, holder.isEmpty() ? u"unknown"_s : holder)};
}

/// Opens the package's folder, which is locked too for those who keep their lock files elsewhere.
std::unique_ptr<FileDescriptor> openedFolder(const QString& package)
{
    return std::make_unique<FileDescriptor>(
        ::open(QFile::encodeName(package).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// Who has locked the package's folder, where the system tells, and since when it runs: when it
/// took the lock is told in a file that this user may not read.
QString lockerOf(const QString& package)
{
    const QList<qint64> holders = FileLocks::holders(FileLocks::Kind::Flock, {package});
    if (holders.isEmpty()) {
        return u"unknown"_s;
    }
    const QDateTime start = FileLocks::startOf(holders.first());
    return start.isValid() ? since(holders.first(), start) : onThisHost(holders.first()).trimmed();
}

/// Whether somebody writes; a lock that this look takes itself goes with the descriptor.
bool isLocked(const FileDescriptor& file)
{
    return file.isOpen() && ::flock(file.number(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

/// A file system without locks of folders stops nobody.
Result<std::unique_ptr<FileDescriptor>> lockPackage(const QString& package)
{
    std::unique_ptr<FileDescriptor> folder = openedFolder(package);
    if (folder->isOpen() && takeLock(folder->number()) == EWOULDBLOCK) {
        return heldBy(package, lockerOf(package));
    }
    return folder;
}

} // namespace

Result<std::unique_ptr<LibraryLock>> LibraryLock::take(const QString& package,
                                                       const QString& stateFolder)
{
    Result<void> folder = AtomicFile::makeFolder(stateFolder);
    if (folder.ok()) {
        // The crash log's writer may have made folders above it, and does not flush them. Were they
        // lost in a power cut, the journal in them would be, and with it what has to be cleared
        // away.
        folder = AtomicFile::flushWithParents(stateFolder);
    }
    if (!folder.ok()) {
        return StateFolder::unusable(folder.error(), package);
    }
    const QString path = stateFolder + "/lock"_L1;
    auto file = std::make_unique<FileDescriptor>(
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, kPrivate));
    if (!file->isOpen()) {
        return StateFolder::unusable(AtomicFile::errorFromErrno(errno, u"write"_s, path), package);
    }
    const int error = takeLock(file->number());
    if (error == EWOULDBLOCK) {
        return heldBy(package, holderIn(file->number()));
    }
    if (error != 0) {
        const Error cause = AtomicFile::errorFromErrno(error, u"lock"_s, path);
        return StateFolder::unusable({ErrorCode::NotWritable, cause.message}, package);
    }
    Result<std::unique_ptr<FileDescriptor>> packageLock = lockPackage(package);
    if (!packageLock.ok()) {
        return packageLock.error();
    }
    QString leftBehind = holderIn(file->number());
    if (!writeHolder(file->number(), ownName())) {
        return StateFolder::unusable(AtomicFile::errorFromErrno(errno, u"write"_s, path), package);
    }
    return std::unique_ptr<LibraryLock>(
        new LibraryLock(std::move(file), std::move(packageLock).value(), std::move(leftBehind)));
}

QString LibraryLock::holder(const QString& package, const QString& stateFolder)
{
    const FileDescriptor file(
        ::open(QFile::encodeName(stateFolder + "/lock"_L1).constData(), O_RDONLY | O_CLOEXEC));
    if (isLocked(file)) {
        QString holder = holderIn(file.number());
        return holder.startsWith(onThisHost(QCoreApplication::applicationPid())) ? QString()
                                                                                 : holder;
    }
    return isLocked(*openedFolder(package)) ? lockerOf(package) : QString();
}

LibraryLock::LibraryLock(std::unique_ptr<FileDescriptor> file,
                         std::unique_ptr<FileDescriptor> package,
                         QString leftBehind)
    : m_file(std::move(file))
    , m_package(std::move(package))
    , m_leftBehind(std::move(leftBehind))
{
}

LibraryLock::~LibraryLock()
{
    // An empty file says that its last holder ended in good order; that it cannot be emptied only
    // means a line in the next run's log.
    static_cast<void>(writeHolder(m_file->number(), QByteArray()));
}
