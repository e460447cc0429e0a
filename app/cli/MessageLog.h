#pragma once

#include <QtGlobal>

class Console;

/// While it lives, log lines go to the console's standard error, where they do not spoil the line
/// of progress, and to the system journal. What libraries say for debugging goes nowhere.
/// There may be one at a time; it is made and destroyed on the main thread while no other thread
/// logs.
class MessageLog final
{
    Q_DISABLE_COPY_MOVE(MessageLog)
public:
    /// `console` must outlive this object.
    explicit MessageLog(Console& console);
    ~MessageLog();

private:
    QtMessageHandler m_previous;
};
