#pragma once

#include <QSet>
#include <QString>

#include <functional>
#include <utility>

/// Package-relative files that this program's own journal knows. Asked for after the files were
/// looked at, because a writer names a file before it makes it.
class NamedFiles final
{
public:
    NamedFiles() = default;

    NamedFiles(QSet<QString> files) // NOLINT(google-explicit-constructor): it is the same
        : m_ask([files = std::move(files)] { return files; })
    {
    }

    explicit NamedFiles(std::function<QSet<QString>()> ask)
        : m_ask(std::move(ask))
    {
    }

    [[nodiscard]] QSet<QString> now() const { return m_ask ? m_ask() : QSet<QString>(); }

private:
    std::function<QSet<QString>()> m_ask;
};
