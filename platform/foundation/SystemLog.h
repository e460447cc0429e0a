#pragma once

#include <QLoggingCategory>
#include <QString>

/// The one logging category of the program, "corvane".
Q_DECLARE_LOGGING_CATEGORY(corvaneLog)

/// Writes one entry (it may hold line breaks) to the system log: standard error, and the system
/// journal where there is one and standard error is not already connected to it. A program that
/// installed a message handler of its own gets the entry there, as an informational message of
/// corvaneLog. Any thread.
void systemLog(const QString& entry);

/// The journal's side of it, for message handlers that replace Qt's own: sends the entry to
/// `/run/systemd/journal/socket` where that exists and standard error is not already connected to
/// the journal; does nothing otherwise. Any thread.
void sendToSystemJournal(const QString& entry);
