#pragma once

#include <QString>

/// Where a user puts files that may still be wanted back. Main thread.
class Trash
{
public:
    virtual ~Trash() = default;
    /// Moves the file there and waits until it is done. Returns 0; any other status means that the
    /// file is still where it was.
    [[nodiscard]] virtual int moveToTrash(const QString& path) = 0;
};
