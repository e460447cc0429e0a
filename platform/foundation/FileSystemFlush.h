#pragma once

#include "FileDescriptor.h"
#include "Result.h"

#include <QString>

/// Flushes everything that was written below a folder: in one go where that surely reaches the
/// disk, which takes a small part of what one flush for each of many files does, and file by file
/// elsewhere. One thread at a time.
class FileSystemFlush final
{
public:
    /// The folder is on one file system with all that is below it. Made before the first write, so
    /// that flush() tells also what the system fails to write in between (syncfs(2), since Linux
    /// 5.8).
    explicit FileSystemFlush(const QString& folder);

    /// What was written since is on the disk, contents and names. Errors: NotFound, NotWritable,
    /// OutOfSpace.
    [[nodiscard]] Result<void> flush() const;

    /// Flushes a folder and each file and folder below it by itself, on any file system. Where
    /// there is no such folder nothing is flushed. Errors: those of flush().
    [[nodiscard]] static Result<void> eachBelow(const QString& folder);

private:
    QString m_path;
    FileDescriptor m_folder;
    int m_error; ///< errno of the opening
};
