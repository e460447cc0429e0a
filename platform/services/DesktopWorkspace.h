#pragma once

#include "Workspace.h"

/// The desktop's own way to open things: the program "xdg-open" found on the PATH.
class DesktopWorkspace final : public Workspace
{
public:
    /// Starts the program and returns; what it prints is discarded.
    bool open(const QUrl& url) override;
};
