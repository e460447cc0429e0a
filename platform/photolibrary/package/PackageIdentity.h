#pragma once

#include "FileDescriptor.h"
#include "Result.h"

#include <QString>

/// Which folder a path led to when it was opened. A package that is moved while it is open takes
/// its databases along, but files are written by path: they must not begin a new folder at the old
/// one, nor land in another library that was put there. Any thread.
class PackageIdentity final
{
public:
    /// Of the folder at `package`, an absolute path.
    explicit PackageIdentity(const QString& package);

    /// Error: NotFound where the path no longer leads to that folder.
    [[nodiscard]] Result<void> check() const;

private:
    QString m_package;
    FileDescriptor m_folder; ///< kept open, so that its number is given to no other folder
};
