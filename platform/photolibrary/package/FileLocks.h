#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

/// Who has locked a file, as far as the system tells: not for processes that it hides from this
/// one, nor on every file system. The files themselves are not opened. Any thread.
namespace FileLocks
{

enum class Kind : quint8 {
    Flock, ///< of flock(2)
    Posix, ///< of fcntl(2), as SQLite takes them
};

/// Ids of the other processes that hold a lock of that kind on one of the files.
[[nodiscard]] QList<qint64> holders(Kind kind, const QStringList& paths);

/// When a process began, to about a hundredth of a second; invalid when the system does not tell.
[[nodiscard]] QDateTime startOf(qint64 process);

/// What the system calls a process, such as "corvane-cli"; empty when it does not tell.
[[nodiscard]] QString nameOf(qint64 process);

} // namespace FileLocks
