#include "Bundle.h"
#include "Clock.h"
#include "Command.h"
#include "Console.h"
#include "CrashLogWriter.h"
#include "DesktopNotificationCenter.h"
#include "DesktopWorkspace.h"
#include "Face.h"
#include "Interruption.h"
#include "LoginPowerManagement.h"
#include "MessageLog.h"
#include "PictureMemory.h"
#include "SignalWatcher.h"

#include <QCoreApplication>
#include <QFile>

#include <csignal>
#include <cstdio>

int main(int argc, char** argv)
{
    PictureMemory::prepare();
    // A closed pipe is an error of a write, not the end of the process in the midst of a turn.
    std::signal(SIGPIPE, SIG_IGN);
    const Bundle bundle(QStringLiteral(":/corvane"));
    CrashLogWriter::install(CrashLogWriter::factsOf(bundle, QStringLiteral("corvane-cli")));
    const QCoreApplication application(argc, argv);
    Interruption interruption;
    const SignalWatcher watcher(interruption);
    QFile output;
    QFile error;
    if (!output.open(stdout, QIODevice::WriteOnly) || !error.open(stderr, QIODevice::WriteOnly)) {
        return 1;
    }
    Console console(output, error, TerminalFacts::ofThisProcess());
    const MessageLog log(console);
    DesktopWorkspace workspace;
    LoginPowerManagement power;
    DesktopNotificationCenter notifications;
    SystemClock clock;
    return Face::run(QCoreApplication::arguments().mid(1),
                     {console, interruption, bundle, workspace, power, notifications, clock});
}
