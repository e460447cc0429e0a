#include "SystemLog.h"

#include "SystemJournal.h"

#include <QCoreApplication>
#include <QMessageLogger>

#include <unistd.h>

#include <cstdio>
#include <tuple>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(corvaneLog, "corvane", QtInfoMsg)

namespace
{

/// One plain line on standard error for each message; entries of this program's log also to the
/// system journal. It stands in for Qt's own handler, whose lines begin with the category.
void plainLineHandler(QtMsgType /*type*/, const QMessageLogContext& context, const QString& message)
{
    const QByteArray line = message.toUtf8() + '\n';
    std::ignore = std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
    std::ignore = std::fflush(stderr);
    if (qstrcmp(context.category, corvaneLog().categoryName()) == 0) {
        sendToSystemJournal(message);
    }
}

/// A handler that a program or a test has already installed stays.
void installPlainLines()
{
    const QtMessageHandler installed = qInstallMessageHandler(nullptr);
    const QtMessageHandler qtsOwn = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(installed == qtsOwn ? plainLineHandler : installed);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(installPlainLines)

void systemLog(const QString& entry)
{
    QMessageLogger(nullptr, 0, nullptr, corvaneLog().categoryName())
        .info(corvaneLog(), "%s", qUtf8Printable(entry));
}

void sendToSystemJournal(const QString& entry)
{
    if (!SystemJournal::isJournalStream(STDERR_FILENO, qEnvironmentVariable("JOURNAL_STREAM"))) {
        SystemJournal::send(u"/run/systemd/journal/socket"_s, entry);
    }
}
