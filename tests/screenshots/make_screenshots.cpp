#include "DesktopProgram.h"
#include "LibraryActions.h"
#include "PhotoGrid.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kPatience = 30000; ///< milliseconds
constexpr int kSettling = 800;   ///< for thumbnails to come in

/// The dark counterpart of the style's own palette.
QPalette darkPalette()
{
    QPalette palette;
    const QColor base(35, 35, 38);
    const QColor window(48, 48, 52);
    const QColor text(232, 232, 232);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, QColor(150, 150, 150));
    palette.setColor(QPalette::Highlight, QColor(60, 120, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(120, 170, 240));
    palette.setColor(QPalette::Mid, QColor(70, 70, 74));
    palette.setColor(QPalette::Dark, QColor(28, 28, 30));
    palette.setColor(QPalette::Light, QColor(90, 90, 95));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
    }
    return palette;
}

class Photographer
{
public:
    Photographer(DesktopProgram& program, QString folder, QString suffix)
        : m_program(program)
        , m_folder(std::move(folder))
        , m_suffix(std::move(suffix))
    {
    }

    [[nodiscard]] bool takeAll()
    {
        LibraryWindow& library = m_program.libraryWindow();
        library.resize(1000, 640);
        const bool there = QTest::qWaitFor(
            [this] { return m_program.session().isOpen() && !m_program.session().isBusy(); },
            kPatience);
        if (!there) {
            return false;
        }
        library.actions().selectRaw->trigger();
        QTest::qWait(kSettling);
        take(library, u"library"_s);
        for (QAction* const action : library.actions().view->actions()) {
            if (action->shortcut() == QKeySequence(u"Ctrl+Alt+I"_s)) {
                action->trigger();
                QTest::qWait(kSettling);
                take(library, u"inspector"_s);
                action->trigger();
            }
        }
        CorvaneWindow& corvane = m_program.corvaneWindow();
        corvane.show();
        QTest::qWait(kSettling);
        take(corvane, u"corvane"_s);
        takeSheet(corvane);
        return m_good;
    }

private:
    void takeSheet(CorvaneWindow& corvane)
    {
        m_program.controller().configureFixedSize(nullptr);
        QTest::qWait(kSettling);
        if (QWidget* const sheet = QApplication::activeModalWidget()) {
            take(*sheet, u"fixed-size"_s);
        }
        m_program.controller().dismissFixedSizePanel(nullptr);
        corvane.activateWindow();
    }

    void take(QWidget& window, const QString& name)
    {
        const QString path = QDir(m_folder).filePath(name + m_suffix + u".png"_s);
        m_good = window.grab().save(path) && m_good;
        QTextStream(stdout) << path << '\n';
    }

    DesktopProgram& m_program;
    QString m_folder;
    QString m_suffix;
    bool m_good{true};
};

} // namespace

/// Takes pictures of the windows over a library: make_screenshots LIBRARY FOLDER [dark] [SUFFIX].
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3) {
        QTextStream(stderr) << "usage: make_screenshots LIBRARY FOLDER [dark] [SUFFIX]\n";
        return 2;
    }
    QApplication::setStyle(u"Fusion"_s);
    const bool dark = arguments.contains(u"dark"_s);
    if (dark) {
        QApplication::setPalette(darkPalette());
    }
    QApplication::setQuitOnLastWindowClosed(false);
    const QTemporaryDir settings;
    DesktopProgram program(settings.filePath(u"settings.plist"_s));
    program.start(arguments.at(1));
    const QString last = arguments.last();
    const QString suffix = arguments.size() > 3 && last != u"dark"_s ? last : QString();
    Photographer photographer(program, arguments.at(2), (dark ? u"-dark"_s : QString()) + suffix);
    return photographer.takeAll() ? 0 : 1;
}
