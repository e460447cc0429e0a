#pragma once

#include "Workspace.h"

#include <QList>

/// Remembers what it was asked to open; it may be told that it cannot.
class FakeWorkspace final : public Workspace
{
public:
    bool open(const QUrl& url) override
    {
        m_opened.append(url);
        return m_canOpen;
    }

    void setCanOpen(bool canOpen) { m_canOpen = canOpen; }

    [[nodiscard]] const QList<QUrl>& opened() const { return m_opened; }

private:
    QList<QUrl> m_opened;
    bool m_canOpen{true};
};
