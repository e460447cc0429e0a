#pragma once

#include "Result.h"

#include <QString>

#include <memory>

class QLockFile;
class QTemporaryDir;

/// A private folder (mode 0700) below the system's temporary directory, removed with all its
/// content at destruction. Folders that a killed run of this program left are removed when a new
/// one is made (each holds a lock file that tells whether its process still lives).
/// One thread at a time.
class TemporaryDirectory final
{
public:
    /// Errors: NotFound, NotWritable, OutOfSpace; the message names the folder.
    [[nodiscard]] static Result<TemporaryDirectory> create();
    TemporaryDirectory(TemporaryDirectory&&) noexcept;
    TemporaryDirectory& operator=(TemporaryDirectory&&) noexcept;
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory();

    /// Absolute, ends in a slash.
    [[nodiscard]] QString path() const;

private:
    explicit TemporaryDirectory(std::unique_ptr<QTemporaryDir> folder);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QLockFile> m_lock;
};
