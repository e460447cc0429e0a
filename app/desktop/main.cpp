#include "Bundle.h"
#include "DesktopArguments.h"
#include "DesktopProgram.h"

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

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication::setApplicationName(QStringLiteral("Corvane"));
    QCoreApplication::setApplicationVersion(Bundle(QStringLiteral(":/corvane")).version());
    const DesktopArguments given = DesktopArguments::parse(argumentsOf(argc, argv));
    if (given.answer) {
        QTextStream(given.status == 0 ? stdout : stderr) << *given.answer;
        return given.status;
    }
    const QApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("io.github.corvane.Corvane"));
    QGuiApplication::setWindowIcon(
        QIcon::fromTheme(QStringLiteral("io.github.corvane.Corvane"),
                         QIcon(QStringLiteral(":/corvane/icons/io.github.corvane.Corvane.svg"))));
    QApplication::setQuitOnLastWindowClosed(false);
    DesktopProgram program(given.defaults);
    QObject::connect(
        &program, &DesktopProgram::ended, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    program.start(given.library);
    return QApplication::exec();
}
