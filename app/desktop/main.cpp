#include "ApplicationId.h"
#include "Bundle.h"
#include "CrashLogWriter.h"
#include "DesktopArguments.h"
#include "DesktopProgram.h"
#include "Interruption.h"
#include "SessionEnd.h"
#include "SignalWatcher.h"

#include <QApplication>
#include <QIcon>
#include <QTextStream>

#include <csignal>

namespace
{

/// Without an application object, so that help and version need no display.
QStringList argumentsOf(int argc, char** argv)
{
    QStringList arguments;
    for (int index = 1; index < argc; ++index) {
        arguments.append(QString::fromLocal8Bit(argv[index]));
    }
    return arguments;
}

/// A signal ends the program as closing its windows does, but asks nobody.
void endOnInterruption(DesktopProgram& program, const Interruption& interruption)
{
    QObject::connect(
        &interruption, &Interruption::requested, &program, &DesktopProgram::stopAndQuit);
    if (interruption.isRequested()) {
        program.stopAndQuit();
    }
}

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);
    const Bundle bundle(QStringLiteral(":/corvane"));
    CrashLogWriter::install(CrashLogWriter::factsOf(bundle, QStringLiteral("corvane")));
    QCoreApplication::setApplicationName(QStringLiteral("Corvane"));
    QCoreApplication::setApplicationVersion(bundle.version());
    const DesktopArguments given = DesktopArguments::parse(argumentsOf(argc, argv));
    if (given.answer) {
        QTextStream(given.status == 0 ? stdout : stderr) << *given.answer;
        return given.status;
    }
    // Before Qt starts anything that a signal could interrupt.
    Interruption interruption;
    const SignalWatcher watcher(interruption);
    const QApplication application(argc, argv);
    Q_INIT_RESOURCE(corvane_icons); // without them this does not link
    QGuiApplication::setDesktopFileName(applicationId());
    QGuiApplication::setWindowIcon(QIcon::fromTheme(
        applicationId(), QIcon(QStringLiteral(":/corvane/icons/%1.svg").arg(applicationId()))));
    QApplication::setQuitOnLastWindowClosed(false);
    DesktopProgram program(given.defaults);
    QObject::connect(
        &program, &DesktopProgram::ended, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    program.start(given.library);
    endOnInterruption(program, interruption);
    followSessionEnd(program);
    const int status = QApplication::exec();
    const int signal = watcher.firstSignal();
    return signal == 0 ? status : SignalWatcher::exitStatus(signal);
}
