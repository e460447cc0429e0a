#include "LibraryLock.h"

#include "AtomicFile.h"
#include "StateFolder.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QSysInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace
{

constexpr mode_t kPrivate = 0600;
constexpr int kLongestHolder = 512;

/// "process 4711 on host since 2026-11-21 10:00:00".
QByteArray ownName()
{
    return u"process %1 on %2 since %3"_s.arg(QCoreApplication::applicationPid())
        .arg(QSysInfo::machineHostName(),
             QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH:mm:ss"_s))
        .toUtf8();
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

} // namespace

Result<std::unique_ptr<LibraryLock>> LibraryLock::take(const QString& package,
                                                       const QString& stateFolder)
{
    if (const Result<void> folder = AtomicFile::makeFolder(stateFolder); !folder.ok()) {
        return StateFolder::unusable(folder.error(), package);
    }
    const QString path = stateFolder + "/lock"_L1;
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, kPrivate);
    if (descriptor < 0) {
        return StateFolder::unusable(AtomicFile::errorFromErrno(errno, u"write"_s, path), package);
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        const QString holder = holderIn(descriptor);
        ::close(descriptor);
        return Error{
            ErrorCode::InUse,
            u"Another Corvane writes to the library \"%1\" (%2): wait for it to end."_s.arg(
                package, holder.isEmpty() ? u"unknown"_s : holder)};
    }
    QString leftBehind = holderIn(descriptor);
    if (!writeHolder(descriptor, ownName())) {
        const Error error =
            StateFolder::unusable(AtomicFile::errorFromErrno(errno, u"write"_s, path), package);
        ::close(descriptor);
        return error;
    }
    return std::unique_ptr<LibraryLock>(new LibraryLock(descriptor, std::move(leftBehind)));
}

LibraryLock::LibraryLock(int descriptor, QString leftBehind)
    : m_descriptor(descriptor)
    , m_leftBehind(std::move(leftBehind))
{
}

LibraryLock::~LibraryLock()
{
    // An empty file says that its last holder ended in good order; that it cannot be emptied only
    // means a line in the next run's log.
    static_cast<void>(writeHolder(m_descriptor, QByteArray()));
    ::close(m_descriptor);
}
