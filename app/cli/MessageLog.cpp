#include "MessageLog.h"

#include "Console.h"

#include <QString>

#include <atomic>

namespace
{

/// Qt's message handlers are plain functions, so the log has to be reached without an object.
std::atomic<MessageLog*>& currentLog()
{
    static std::atomic<MessageLog*> log{nullptr};
    return log;
}

} // namespace

MessageLog::MessageLog(Console& console, Journal journal)
    : m_console(console)
    , m_journal(journal)
    , m_previous((currentLog().store(this), qInstallMessageHandler(handle)))
{
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(m_previous);
    currentLog().store(nullptr);
}

void MessageLog::handle(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    MessageLog* const log = currentLog().load();
    if (log == nullptr || type == QtDebugMsg) {
        return;
    }
    log->m_console.say(message);
    if (qstrcmp(context.category, corvaneLog().categoryName()) == 0) {
        log->m_journal(message);
    }
}
