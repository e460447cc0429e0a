#pragma once

#include <QString>
#include <QStringList>

#include <mutex>

/// What recording fakes write down, one line a call, in the order of the calls. Fakes that share
/// one journal show how their calls interleave. Any thread.
class Journal final
{
public:
    void add(const QString& line)
    {
        const std::lock_guard lock(m_mutex);
        m_lines.append(line);
    }

    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_lines.clear();
    }

    [[nodiscard]] QStringList lines() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

    /// The lines that contain `text`.
    [[nodiscard]] QStringList linesWith(const QString& text) const { return lines().filter(text); }

private:
    mutable std::mutex m_mutex;
    QStringList m_lines;
};
