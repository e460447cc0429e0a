#pragma once

#include "Trash.h"

#include <QFile>
#include <QStringList>

/// A trash that is a list: what goes into it is gone from its place, unless it is told to refuse.
class FakeTrash final : public Trash
{
public:
    [[nodiscard]] int moveToTrash(const QString& path) override
    {
        if (m_status == 0) {
            m_files.append(path);
            QFile::remove(path);
        }
        return m_status;
    }

    /// Anything but 0: refuses.
    void setStatus(int status) { m_status = status; }

    [[nodiscard]] const QStringList& files() const { return m_files; }

private:
    int m_status{0};
    QStringList m_files;
};
