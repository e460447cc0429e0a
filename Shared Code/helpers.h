#pragma once

#include <QString>
#include <QVariant>

class CorvaneDelegate;

/// File operations on picture files of the library. Without state; any thread but where said.
class helpers final
{
public:
    /// Removes the file, link or empty folder at the path; what cannot be removed stays, and
    /// nobody is told. A folder with content is never removed: no caller means one.
    static void deleteFile(const QString& path);

    /// Whether this process may read what is at the path.
    [[nodiscard]] static bool fileReadable(const QString& path);

    /// Whether the file exists and is readable, after at most one request for access: where it
    /// exists but cannot be read, `appDelegate` is asked on the main thread for access to the
    /// library that holds it, or to the file itself where no library does. A null path is NO.
    /// Thread: the scan's worker, which waits for the answer; or main. Errors: what the controller
    /// raises while it asks is raised here.
    [[nodiscard]] static bool fileExists(const QVariant& path, CorvaneDelegate& appDelegate);
};
