#include "WindowPhotographer.h"

#include "CarePhotographer.h"
#include "Directories.h"
#include "FixedSizeSheet.h"
#include "LibraryActions.h"
#include "PhotoGrid.h"
#include "PhotoLibrary.h"
#include "PhotoViewer.h"
#include "PropertyList.h"
#include "ScanClosingView.h"
#include "Texts.h"
#include "UserDefaults.h"
#include "WhenModal.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTest>
#include <QTextStream>

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kPatience = 60000; ///< milliseconds
constexpr int kSettling = 800;   ///< for thumbnails to come in
constexpr QSize kUsual(1000, 640);
constexpr QSize kSmall(900, 600);

/// As the program leaves it.
constexpr const char* kCrashLog =
    "Program:      corvane (Corvane)\n"
    "Version:      0.1.0\n"
    "System:       Debian GNU/Linux 12 (bookworm), linux 6.1.0-18-amd64, x86_64\n"
    "Date:         2026-01-31 12:05:59 UTC\n"
    "Running for:  83 s\n"
    "Process:      4711\n"
    "Thread:       4715 \"QThread\"\n"
    "\n"
    "Signal:       11 SIGSEGV\n"
    "Code:         1 SEGV_MAPERR: no memory is mapped there\n"
    "Address:      0x0000000000000010\n"
    "\n"
    "Stack, the newest call first:\n";
constexpr int kCalls = 60;

/// The window of that class's name, if it is up.
QWidget* windowNamed(const QString& name)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* const window : windows) {
        if (window->objectName() == name && window->isVisible()) {
            return window;
        }
    }
    return nullptr;
}

} // namespace

WindowPhotographer::WindowPhotographer(DesktopProgram& program,
                                       QString library,
                                       QString folder,
                                       QString suffix)
    : m_program(program)
    , m_library(std::move(library))
    , m_folder(std::move(folder))
    , m_suffix(std::move(suffix))
{
    m_program.libraryWindow().resize(kUsual);
}

bool WindowPhotographer::takeMainWindows()
{
    m_program.start(m_library);
    m_good = open() && m_good;
    takeLibraryWindow();
    takeCorvaneWindow();
    return m_good;
}

bool WindowPhotographer::takeEverything()
{
    m_program.start({});
    takeCrashWindow();
    takeWelcomePage();
    takeReadOnlyLibrary();
    m_good = open() && m_good;
    takeLibraryWindow();
    takeSmallLibraryWindow();
    takeViewer();
    takeInspector();
    takeCorvaneWindow();
    takeCorvaneWindowAtWork();
    takeFixedSizeSheet();
    takeScan();
    takeScanClosing();
    takeDialogsOfTheLibraryWindow();
    takeCare();
    return m_good;
}

/// Opens the library for writing, unless it is.
bool WindowPhotographer::open()
{
    m_program.libraryWindow().openLibrary(m_library);
    return QTest::qWaitFor([this] { return !m_program.session().isBusy(); }, kPatience) &&
           m_program.session().isOpen();
}

bool WindowPhotographer::leaveCrashLog(const QString& settingsFile)
{
    const QDir logs(Directories::state() + u"/Logs/DiagnosticReports"_s);
    QFile log(logs.filePath(u"Corvane_2026-01-31_12-05-59_4711.crash"_s));
    if (!logs.mkpath(u"."_s) || !log.open(QIODevice::WriteOnly)) {
        return false;
    }
    QByteArray text(kCrashLog);
    for (int call = 0; call < kCalls; ++call) {
        text += QByteArray::number(call).rightJustified(3) +
                "  libQt6Core.so.6.4.2 + 0x1c2f3b [6976b895aa51ea4619aaa4d7f19f2b055ad05f7d]\n";
    }
    // Nobody answers at that address: what is said of a machine without a network is seen too.
    UserDefaults defaults(settingsFile);
    defaults.setValue(u"ZTBCrashReporterCrashSubmissionURL"_s, u"https://localhost:9/"_s);
    defaults.setValue(u"ZTBCrashReporterLastCrashReportDate"_s,
                      QVariant::fromValue(PropertyList::Date{0.0}));
    return log.write(text) == text.size();
}

void WindowPhotographer::takeCrashWindow()
{
    QWidget* const window = windowNamed(u"ZTBCrashReporterWindow"_s);
    if (window == nullptr) {
        m_good = false;
        return;
    }
    window->findChild<QPlainTextEdit*>(u"commentsTextView"_s)
        ->setPlainText(u"I had just pressed Convert to JPEG."_s);
    QTest::qWait(kSettling);
    take(*window, u"crash"_s);
    takeDialog(u"crash-contents"_s,
               [window] { window->findChild<QAbstractButton*>(u"showReportContents"_s)->click(); });
    window->findChild<QAbstractButton*>(u"reportButton"_s)->click();
    const auto sheet = [window] { return window->findChild<QWidget*>(u"submissionSheet"_s); };
    take(*window, u"crash-sending"_s);
    m_good = QTest::qWaitFor([&sheet] { return sheet() != nullptr; }, kPatience) && m_good;
    if (QWidget* const outcome = sheet()) {
        QTest::qWait(kSettling);
        take(*outcome, u"crash-not-sent"_s);
        outcome->close();
    }
    window->close();
}

void WindowPhotographer::takeWelcomePage()
{
    m_program.libraryWindow().offer(
        {m_library, u"/home/somebody/Pictures/Old/Travels & Family.photolibrary"_s});
    QTest::qWait(kSettling);
    take(m_program.libraryWindow(), u"welcome"_s);
}

void WindowPhotographer::takeReadOnlyLibrary()
{
    const auto other =
        PhotoLibrary::open(m_library, {.access = Access::Write, .afterCrash = false});
    m_good = other.ok() && open() && m_good;
    QTest::qWait(kSettling);
    take(m_program.libraryWindow(), u"read-only"_s);
}

void WindowPhotographer::takeLibraryWindow()
{
    m_program.libraryWindow().actions().selectRaw->trigger();
    QTest::qWait(kSettling);
    take(m_program.libraryWindow(), u"library"_s);
}

void WindowPhotographer::takeSmallLibraryWindow()
{
    m_program.libraryWindow().resize(kSmall);
    QTest::qWait(kSettling);
    take(m_program.libraryWindow(), u"library-small"_s);
    m_program.libraryWindow().resize(kUsual);
}

void WindowPhotographer::takeViewer()
{
    m_program.libraryWindow().actions().showLarge->trigger();
    QTest::qWait(kSettling);
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* const window : windows) {
        if (auto* const viewer = qobject_cast<PhotoViewer*>(window)) {
            take(*viewer, u"viewer"_s);
            viewer->close();
            return;
        }
    }
    m_good = false;
}

void WindowPhotographer::takeInspector()
{
    LibraryWindow& window = m_program.libraryWindow();
    auto* const dock = window.findChild<QDockWidget*>(u"inspectorDock"_s);
    dock->show();
    QTest::qWait(kSettling);
    take(window, u"inspector-of-several"_s);
    window.findChild<PhotoGrid*>()->selectPhotos({m_program.session().contents().photos.at(0).id});
    QTest::qWait(kSettling);
    take(window, u"inspector"_s);
    dock->hide();
    window.actions().selectRaw->trigger();
}

void WindowPhotographer::takeCorvaneWindow()
{
    m_program.corvaneWindow().show();
    QTest::qWait(kSettling);
    take(m_program.corvaneWindow(), u"corvane"_s);
}

void WindowPhotographer::takeCorvaneWindowAtWork()
{
    CorvaneAppDelegate& controller = m_program.controller();
    controller.statusLabel().setStringValue(Texts::propagatingMetadata());
    controller.countLabel().setStringValue(u"A very long name of a file "_s.repeated(6) +
                                           u".CR2"_s);
    controller.setTimeRemaining(u"100:02:10"_s);
    controller.progressIndicator().setMaxValue(100.0);
    controller.progressIndicator().setDoubleValue(40.0);
    m_program.corvaneWindow().resize(kSmall);
    QTest::qWait(kSettling);
    take(m_program.corvaneWindow(), u"corvane-at-work"_s);
}

void WindowPhotographer::takeFixedSizeSheet()
{
    m_program.controller().configureFixedSize(nullptr);
    QTest::qWait(kSettling);
    take(m_program.corvaneWindow().fixedSizeSheet(), u"fixed-size"_s);
    m_program.controller().dismissFixedSizePanel(nullptr);
}

void WindowPhotographer::takeDialogsOfTheLibraryWindow()
{
    LibraryWindow& window = m_program.libraryWindow();
    const LibraryActions& actions = window.actions();
    takeDialog(u"open-panel"_s, [&actions] { actions.open->trigger(); });
    takeDialog(u"about"_s, [&actions] { actions.about->trigger(); });
    actions.showTrash->trigger();
    QTest::qWait(kSettling);
    take(window, u"trash"_s);
    takeDialog(u"empty-trash"_s, [&actions] { actions.emptyTrash->trigger(); });
}

/// With the question of who closes a window meanwhile, and the alert at the end.
void WindowPhotographer::takeScan()
{
    CorvaneWindow& window = m_program.corvaneWindow();
    window.findChild<QAbstractButton*>(u"TrashEnabled"_s)->click();
    window.findChild<QAbstractButton*>(u"selectionScanButton"_s)->click();
    takeDialog(u"quit-question"_s, [&window] { window.close(); });
    m_good = QTest::qWaitFor([this] { return !m_program.controller().isScanning(); }, kPatience) &&
             m_good;
    if (auto* const alert = window.findChild<QMessageBox*>(u"alert"_s)) {
        QTest::qWait(kSettling);
        take(*alert, u"alert"_s);
        alert->close();
    } else {
        m_good = false;
    }
    m_good = QTest::qWaitFor([this] { return !m_program.session().isBusy(); }, kPatience) && m_good;
}

/// What is told of photos that were not converted, of the shortest window that shows it.
void WindowPhotographer::takeScanClosing()
{
    ScanClosing closing;
    for (qint64 id = 1; id <= 12; ++id) {
        ScannedPhoto photo{.id = id, .filename = u"IMG_%1.CR2"_s.arg(2000 + id), .outcome = {}};
        photo.outcome.reason =
            u"/home/somebody/Pictures/Travels & Family.photolibrary/Masters/2019/08/17/"
            "20190817-101112/%1 is damaged: its data end early"_s.arg(photo.filename);
        closing.notConverted += photo;
    }
    closing.otherNames += ScannedPhoto{.id = 13, .filename = u"IMG_2013.CR2"_s, .outcome = {}};
    closing.otherNames.last().outcome.importedAs = u"IMG_2012.jpg"_s;
    CorvaneWindow& window = m_program.corvaneWindow();
    window.scanClosing().setClosing(closing);
    window.resize(window.minimumSizeHint());
    QTest::qWait(kSettling);
    take(window, u"corvane-closing-small"_s);
    window.resize(kSmall);
    QTest::qWait(kSettling);
    take(window, u"corvane-closing"_s);
}

void WindowPhotographer::takeCare()
{
    CarePhotographer care(
        m_program,
        m_library,
        {.take = [this](QWidget& window, const QString& name) { take(window, name); },
         .takeDialog = [this](const QString& name,
                              const std::function<void()>& action) { takeDialog(name, action); }});
    m_good = care.takeEverything() && m_good;
}

void WindowPhotographer::take(QWidget& window, const QString& name)
{
    const QString path = QDir(m_folder).filePath(name + m_suffix + u".png"_s);
    m_good = window.grab().save(path) && m_good;
    QTextStream(stdout) << path << '\n';
}

void WindowPhotographer::takeDialog(const QString& name, const std::function<void()>& action)
{
    bool taken = false;
    whenModal([this, &name, &taken](QWidget& dialog) {
        QTest::qWait(kSettling);
        take(dialog, name);
        taken = true;
        dialog.close();
    });
    action();
    m_good = QTest::qWaitFor([&taken] { return taken; }, kPatience) && m_good;
}
