#pragma once

#include "SystemLog.h"

#include <QtGlobal>

class Console;

/// While it lives, log lines go to the console's standard error, where they do not spoil the line
/// of progress, and entries of this program's own log also to the system journal. What libraries
/// say for debugging goes nowhere.
/// There may be one at a time; it is made and destroyed on the main thread while no other thread
/// logs.
class MessageLog final
{
    Q_DISABLE_COPY_MOVE(MessageLog)
public:
    /// Takes an entry for the system journal; any thread.
    using Journal = void (*)(const QString& entry);

    /// `console` must outlive this object.
    explicit MessageLog(Console& console, Journal journal = sendToSystemJournal);
    ~MessageLog();

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message);

    Console& m_console;
    const Journal m_journal;
    QtMessageHandler m_previous;
};
