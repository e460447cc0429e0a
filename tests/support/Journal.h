#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <mutex>
#include <utility>

/// What recording fakes write down, one line a call, in the order of the calls. Fakes that share
/// one journal show how their calls interleave. Any thread.
class Journal final
{
public:
    void add(const QString& line)
    {
        if (m_beforeLine) {
            m_beforeLine(line);
        }
        const std::lock_guard lock(m_mutex);
        m_lines.append(line);
    }

    /// Called for each line before it is taken, on the thread that adds it and without a lock of
    /// the journal. Set before the calls begin.
    void setBeforeLine(std::function<void(const QString& line)> beforeLine)
    {
        m_beforeLine = std::move(beforeLine);
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
    std::function<void(const QString& line)> m_beforeLine;
    mutable std::mutex m_mutex;
    QStringList m_lines;
};
