#pragma once

#include "FileDescriptor.h"
#include "Result.h"

#include <QString>

#include <memory>

/// The writer's lock of a library: an exclusive flock on a file outside the package, which names
/// its holder, and one on the package's folder, since another user keeps such a file elsewhere. The
/// system gives both up when the process ends, however it ends: a lock of a process that is no
/// more, or from before the computer was started, is none. Any thread.
class LibraryLock final
{
public:
    /// `package`: for messages; `stateFolder`: made when absent. Errors: InUse, naming who writes
    /// and since when; NotWritable, OutOfSpace.
    [[nodiscard]] static Result<std::unique_ptr<LibraryLock>> take(const QString& package,
                                                                   const QString& stateFolder);
    ~LibraryLock(); ///< gives the lock up in good order
    LibraryLock(const LibraryLock&) = delete;
    LibraryLock& operator=(const LibraryLock&) = delete;

    /// Who holds either lock now, as the refusal would name it; empty when nobody else than this
    /// process does.
    [[nodiscard]] static QString holder(const QString& package, const QString& stateFolder);

    /// Who held the lock before and did not give it up in good order; empty when nobody.
    [[nodiscard]] const QString& leftBehind() const { return m_leftBehind; }

private:
    LibraryLock(std::unique_ptr<FileDescriptor> file,
                std::unique_ptr<FileDescriptor> package,
                QString leftBehind);

    std::unique_ptr<FileDescriptor> m_file;
    std::unique_ptr<FileDescriptor> m_package;
    QString m_leftBehind;
};
