#include "LogRecorder.h"

#include <QtGlobal>

#include <atomic>
#include <cstring>
#include <mutex>

struct LogRecorder::Content {
    std::mutex mutex;
    QStringList entries;
    std::function<void(const QString&)> onEntry;
    QtMessageHandler previous{nullptr};
};

namespace
{

// A message handler is a plain function: it finds the recorder that lives here.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
std::atomic<LogRecorder::Content*> currentContent{nullptr};

void record(QtMsgType /*type*/, const QMessageLogContext& context, const QString& message)
{
    LogRecorder::Content* content = currentContent;
    if (content == nullptr || context.category == nullptr ||
        std::strcmp(context.category, "corvane") != 0) {
        return;
    }
    std::function<void(const QString&)> onEntry;
    {
        const std::lock_guard lock(content->mutex);
        content->entries.append(message);
        onEntry = content->onEntry;
    }
    if (onEntry) {
        onEntry(message);
    }
}

} // namespace

LogRecorder::LogRecorder()
    : m_content(std::make_unique<Content>())
{
    currentContent = m_content.get();
    m_content->previous = qInstallMessageHandler(record);
}

LogRecorder::~LogRecorder()
{
    qInstallMessageHandler(m_content->previous);
    currentContent = nullptr;
}

QStringList LogRecorder::entries() const
{
    const std::lock_guard lock(m_content->mutex);
    return m_content->entries;
}

void LogRecorder::clear()
{
    const std::lock_guard lock(m_content->mutex);
    m_content->entries.clear();
}

void LogRecorder::setOnEntry(std::function<void(const QString&)> onEntry)
{
    const std::lock_guard lock(m_content->mutex);
    m_content->onEntry = std::move(onEntry);
}
