#pragma once

#include "FileDescriptor.h"
#include "Result.h"

#include <QString>

/// Flushes everything that was written to a file system, in one go: where files are many, that
/// takes a small part of what one flush for each of them does. One thread at a time.
class FileSystemFlush final
{
public:
    /// Of the file system that the folder is in. Made before the first write, so that flush() tells
    /// also what the system fails to write in between (syncfs(2), since Linux 5.8).
    explicit FileSystemFlush(const QString& folder);

    /// What was written since is on the disk, contents and names. Errors: NotWritable, OutOfSpace.
    [[nodiscard]] Result<void> flush() const;

private:
    QString m_path;
    FileDescriptor m_folder;
    int m_error; ///< errno of the opening
};
