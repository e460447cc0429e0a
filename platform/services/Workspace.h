#pragma once

#include <QUrl>

/// Opens things in other programs. Main thread.
class Workspace
{
public:
    virtual ~Workspace() = default;
    /// Opens the page in the default browser. False when nothing could be started.
    virtual bool open(const QUrl& url) = 0;
};
