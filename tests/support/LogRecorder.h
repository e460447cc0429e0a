#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

/// Takes the entries of the system log for as long as it lives; one at a time lives. Entries of
/// other categories are dropped. Entries may come from any thread.
class LogRecorder final
{
public:
    LogRecorder();
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    /// The entries so far.
    [[nodiscard]] QStringList entries() const;
    void clear();
    /// Called for each entry after it was taken, on the thread that wrote it.
    void setOnEntry(std::function<void(const QString& entry)> onEntry);

    struct Content;

private:
    std::unique_ptr<Content> m_content;
};
