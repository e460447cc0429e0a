#pragma once

#include "Result.h"

#include <QString>

#include <memory>

/// The writer's lock of a library: an exclusive flock on a file outside the package, which names
/// its holder. The system gives it up when the process ends, however it ends. Any thread.
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

    /// Who held the lock before and did not give it up in good order; empty when nobody.
    [[nodiscard]] const QString& leftBehind() const { return m_leftBehind; }

private:
    LibraryLock(int descriptor, QString leftBehind);

    int m_descriptor;
    QString m_leftBehind;
};
