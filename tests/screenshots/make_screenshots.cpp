#include "DarkPalette.h"
#include "WindowPhotographer.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTextStream>

using namespace Qt::StringLiterals;

/// Takes pictures of the windows over a library: make_screenshots LIBRARY FOLDER [dark] [all]. With
/// "all" of every window and question; that converts photos of the library. Pictures that are taken
/// at another scale than 1 say so in their names.
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3) {
        QTextStream(stderr) << "usage: make_screenshots LIBRARY FOLDER [dark] [all]\n";
        return 2;
    }
    QApplication::setStyle(u"Fusion"_s);
    QString suffix;
    if (arguments.contains(u"dark"_s)) {
        QApplication::setPalette(darkPalette());
        suffix += u"-dark"_s;
    }
    if (const double scale = application.devicePixelRatio(); scale != 1.0) {
        suffix += u"-%1"_s.arg(qRound(scale * 100));
    }
    QApplication::setQuitOnLastWindowClosed(false);
    const QTemporaryDir settings;
    const QString settingsFile = settings.filePath(u"settings.plist"_s);
    const bool everything = arguments.contains(u"all"_s);
    if (everything && !WindowPhotographer::leaveCrashLog(settingsFile)) {
        return 1;
    }
    DesktopProgram program(settingsFile);
    WindowPhotographer photographer(program, arguments.at(1), arguments.at(2), suffix);
    const bool good = everything ? photographer.takeEverything() : photographer.takeMainWindows();
    return good ? 0 : 1;
}
