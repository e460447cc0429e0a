#include "TemporaryDirectory.h"

#include "AtomicFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>

#include <unistd.h>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace
{

constexpr QLatin1StringView kNamePrefix = "corvane-"_L1;
constexpr QLatin1StringView kLockName = "/lock"_L1;
/// A folder without a lock may belong to a run that is just about to make it.
constexpr qint64 kSecondsUntilLocked = 3600;

bool isOlderThanAnHour(const QFileInfo& entry)
{
    return entry.lastModified().secsTo(QDateTime::currentDateTime()) > kSecondsUntilLocked;
}

std::unique_ptr<QLockFile> lockOf(const QString& folder)
{
    auto lock = std::make_unique<QLockFile>(folder + kLockName);
    // However long a scan takes, only the end of its process makes its lock stale.
    lock->setStaleLockTime(0);
    return lock;
}

/// Removes a folder whose lock this process holds, or that has none: the lock goes last, so that
/// a run that is killed meanwhile leaves a folder that the next one still knows for a run's.
void removeFolder(const QString& path, QLockFile& lock)
{
    // An empty path would mean the current folder: nothing but a folder of that name is removed.
    const QFileInfo folder(path);
    if (!folder.isAbsolute() || !folder.fileName().startsWith(kNamePrefix)) {
        return;
    }
    const QFileInfoList content = QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                           QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : content) {
        const QString found = entry.absoluteFilePath();
        if (entry.isDir() && !entry.isSymLink()) {
            QDir(found).removeRecursively();
        } else if (found != path + kLockName) {
            QFile::remove(found);
        }
    }
    lock.unlock();
    QDir().rmdir(path);
}

/// Whether the folder's run ended while it wrote its name into the lock, and nothing else into the
/// folder. Such a lock QLockFile takes for a living run's.
bool wasNeverNamed(const QString& path, const QLockFile& lock)
{
    qint64 process = 0;
    QString host;
    QString program;
    const QStringList content =
        QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    return content == QStringList{kLockName.mid(1).toString()} &&
           isOlderThanAnHour(QFileInfo(path + kLockName)) &&
           !lock.getLockInfo(&process, &host, &program);
}

/// Removes the folder when the run that made it is dead.
void sweep(const QFileInfo& folder)
{
    if (folder.isSymLink() || folder.ownerId() != ::geteuid()) {
        return;
    }
    const QString path = folder.absoluteFilePath();
    if (!QFileInfo::exists(path + kLockName)) {
        // Only an empty one goes: without a lock nothing says that the content was a run's.
        if (isOlderThanAnHour(folder)) {
            QDir().rmdir(path);
        }
        return;
    }
    const std::unique_ptr<QLockFile> lock = lockOf(path);
    if (wasNeverNamed(path, *lock)) {
        // A living run still holds the file itself, and then it stays.
        lock->removeStaleLockFile();
    }
    if (lock->tryLock(0)) {
        removeFolder(path, *lock);
    }
}

} // namespace

TemporaryDirectory::TemporaryDirectory(std::unique_ptr<QTemporaryDir> folder)
    : m_folder(std::move(folder))
    , m_lock(lockOf(m_folder->path()))
{
    // It would remove the lock file before the lock is given up.
    m_folder->setAutoRemove(false);
}

TemporaryDirectory::TemporaryDirectory(TemporaryDirectory&&) noexcept = default;

TemporaryDirectory& TemporaryDirectory::operator=(TemporaryDirectory&& other) noexcept
{
    std::swap(m_folder, other.m_folder);
    std::swap(m_lock, other.m_lock);
    return *this;
}

TemporaryDirectory::~TemporaryDirectory()
{
    // What was moved from holds nothing.
    if (m_folder && m_lock) {
        removeFolder(m_folder->path(), *m_lock);
    }
}

Result<TemporaryDirectory> TemporaryDirectory::create()
{
    // Empty where the variable names no folder; a path made of that would lie in the root folder.
    const QString system = QDir::tempPath();
    if (system.isEmpty()) {
        return AtomicFile::errorFromErrno(
            ENOENT, u"make a folder in"_s, qEnvironmentVariable("TMPDIR"));
    }
    const QDir parent(system);
    const QFileInfoList found = parent.entryInfoList(
        {kNamePrefix + "??????"_L1}, QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QFileInfo& folder : found) {
        sweep(folder);
    }

    errno = 0;
    auto folder = std::make_unique<QTemporaryDir>(parent.filePath(kNamePrefix + "XXXXXX"_L1));
    if (!folder->isValid()) {
        const int errorNumber = errno;
        return AtomicFile::errorFromErrno(
            errorNumber == 0 ? EACCES : errorNumber, u"make a folder in"_s, parent.path());
    }
    TemporaryDirectory made(std::move(folder));
    if (!made.m_lock->tryLock(0)) {
        const bool isDenied = made.m_lock->error() == QLockFile::PermissionError;
        return AtomicFile::errorFromErrno(
            isDenied ? EACCES : ENOSPC, u"write a lock file in"_s, made.m_folder->path());
    }
    return made;
}

QString TemporaryDirectory::path() const
{
    return m_folder->path() + u'/';
}
