#pragma once

#include "Trash.h"

/// The trash of the desktop (freedesktop.org Trash Specification 1.0): "Trash" in the user's data
/// folder, or on the file's own volume where that is another one.
class DesktopTrash final : public Trash
{
public:
    /// Another status than 0 is an error number of the system (errno).
    [[nodiscard]] int moveToTrash(const QString& path) override;
};
