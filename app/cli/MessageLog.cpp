#include "MessageLog.h"

#include "Console.h"
#include "SystemLog.h"

#include <QString>

#include <atomic>

namespace
{

/// Qt's message handlers are plain functions, so the console has to be reached without an object.
std::atomic<Console*>& currentConsole()
{
    static std::atomic<Console*> console{nullptr};
    return console;
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    Q_UNUSED(context)
    Console* const console = currentConsole().load();
    if (console == nullptr || type == QtDebugMsg) {
        return;
    }
    console->say(message);
    sendToSystemJournal(message);
}

} // namespace

MessageLog::MessageLog(Console& console)
    : m_previous((currentConsole().store(&console), qInstallMessageHandler(handleMessage)))
{
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(m_previous);
    currentConsole().store(nullptr);
}
