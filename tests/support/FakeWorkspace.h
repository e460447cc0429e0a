#pragma once

#include "Workspace.h"

#include <QList>

/// Remembers what it was asked to open.
class FakeWorkspace final : public Workspace
{
public:
    bool open(const QUrl& url) override
    {
        m_opened.append(url);
        return true;
    }

    [[nodiscard]] const QList<QUrl>& opened() const { return m_opened; }

private:
    QList<QUrl> m_opened;
};
