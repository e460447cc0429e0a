#include "DesktopProgram.h"

#include "Directories.h"
#include "LibraryActions.h"
#include "ScanClosingView.h"
#include "Texts.h"
#include "VolumeSetting.h"

#include <QAction>
#include <QApplication>
#include <QEventLoop>
#include <QHash>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace
{

constexpr QMessageBox::ButtonRole kStopRole = QMessageBox::AcceptRole;

/// What was answered to the question whether to stop; NO where it was taken back.
bool saysStop(const QMessageBox& question)
{
    return question.clickedButton() != nullptr &&
           question.buttonRole(question.clickedButton()) == kStopRole;
}

/// The outcomes, with the names of their photos.
QList<ScannedPhoto> named(const QList<PhotoOutcome>& outcomes, const LibraryContents& contents)
{
    QHash<qint64, QString> names;
    for (const QList<PhotoFacts>& photos : {contents.photos, contents.trash}) {
        for (const PhotoFacts& photo : photos) {
            names.insert(photo.id, photo.fileName);
        }
    }
    QList<ScannedPhoto> scanned;
    for (const PhotoOutcome& outcome : outcomes) {
        scanned.append({outcome.photoId, names.value(outcome.photoId), outcome});
    }
    return scanned;
}

} // namespace

DesktopProgram::DesktopProgram(const QString& settingsFile, QObject* parent)
    : QObject(parent)
    , m_bundle(u":/corvane"_s)
    , m_defaults(settingsFile.isEmpty() ? UserDefaults::standardFilePath() : settingsFile)
    , m_recent(m_defaults)
    , m_controller(std::make_unique<CorvaneAppDelegate>(ControllerServices{
          .bridge = m_session,
          .defaults = m_defaults,
          .bundle = m_bundle,
          .presenter = m_presenter,
          .workspace = m_workspace,
          .power = m_power,
          .notifications = m_notifications,
          .clock = m_clock,
          .checkForNewCrashes = [this] { m_crashReporting.checkForNewCrashes(); },
      }))
{
    m_session.setVolumeFolders(VolumeSetting::folders(m_defaults));
    m_controller->awakeFromNib();
    makeWindows();
    followLibrary();
    followScan();
    resetControls();
}

DesktopProgram::~DesktopProgram()
{
    // What follows the ends of scans and openings is no business of a program that is going.
    disconnect(m_controller.get(), nullptr, this, nullptr);
    disconnect(&m_session, nullptr, this, nullptr);
    disconnect(m_libraryWindow.get(), nullptr, this, nullptr);
    m_session.requestStop();
    m_presenter.stop();
    // The windows look at the controller to their ends; it waits for its scans, and goes last.
    m_libraryWindow.reset();
    m_corvaneWindow.reset();
    m_controller.reset();
}

void DesktopProgram::makeWindows()
{
    m_corvaneWindow = std::make_unique<CorvaneWindow>(*m_controller, m_defaults);
    m_presenter.setWindow(m_corvaneWindow.get());
    m_libraryWindow = std::make_unique<LibraryWindow>(m_session, m_recent);
    m_corvaneWindow->setMayClose([this] { return mayHideConverter(); });
    m_libraryWindow->setMayClose([this] { return mayQuit(); });

    connect(m_corvaneWindow.get(),
            &CorvaneWindow::scanRequested,
            m_libraryWindow.get(),
            &LibraryWindow::settleSelection,
            Qt::DirectConnection);
    const LibraryActions& actions = m_libraryWindow->actions();
    connect(m_libraryWindow.get(),
            &LibraryWindow::converterRequested,
            this,
            &DesktopProgram::showConverter);
    connect(actions.information, &QAction::triggered, this, [this] {
        m_controller->moreInfoButton(nullptr);
    });
    connect(
        actions.support, &QAction::triggered, this, [this] { m_controller->techSupport(nullptr); });
    connect(actions.about, &QAction::triggered, this, &DesktopProgram::showAbout);
}

void DesktopProgram::followLibrary()
{
    connect(m_libraryWindow.get(), &LibraryWindow::forecastSelectionChanged, this, [this] {
        m_corvaneWindow->setSelectionFacts(m_libraryWindow->forecastSelection());
        // The photo application is a window of this program: coming back from it is no activation
        // of the program, so the count follows at once.
        m_controller->applicationDidBecomeActive();
    });
    connect(&m_session, &LibrarySession::shown, this, &DesktopProgram::resetControls);
    // The ids of another library are those of other photos.
    connect(&m_session, &LibrarySession::shown, this, [this] {
        m_corvaneWindow->scanClosing().setClosing({});
    });
    connect(&m_corvaneWindow->scanClosing(),
            &ScanClosingView::photoChosen,
            m_libraryWindow.get(),
            &LibraryWindow::showPhoto);
}

void DesktopProgram::followScan()
{
    connect(m_controller.get(), &CorvaneAppDelegate::scanStarted, this, [this] {
        m_session.holdSelection(true);
        m_corvaneWindow->scanClosing().setClosing({});
        m_libraryWindow->setScanning(true);
        m_corvaneWindow->updateForecast();
    });
    connect(m_controller.get(), &CorvaneAppDelegate::scanEnded, this, [this] {
        if (m_controller->isScanning()) {
            return;
        }
        m_session.holdSelection(false);
        m_corvaneWindow->scanClosing().setClosing(
            ScanClosing::of(named(m_outcomes.photos(), m_session.contents())));
        m_libraryWindow->setScanning(false);
        m_corvaneWindow->updateForecast();
        m_session.synchronise();
        if (m_resetOwed) {
            resetControls();
        }
        if (m_quitting) {
            quit();
        }
    });
}

/// As at the start: the controls of a scan that was stopped by its version check stay as it left
/// them until a library is opened.
void DesktopProgram::resetControls()
{
    // A scan that was asked for while the library was being opened has them until its end.
    m_resetOwed = m_controller->isScanning();
    if (m_resetOwed) {
        return;
    }
    m_controller->selectionScanButton().setEnabled(true);
    m_controller->countLabel().setStringValue(QString());
    m_controller->statusLabel().setStringValue(Texts::ready());
    m_controller->progressIndicator().setIndeterminate(false);
    m_controller->progressIndicator().setDoubleValue(0.0);
    m_controller->setNowProcessing(false);
    m_controller->setTimeRemaining(Texts::noTimeRemaining());
    m_controller->applicationDidBecomeActive();
    m_corvaneWindow->setSelectionFacts(m_libraryWindow->forecastSelection());
}

void DesktopProgram::start(const QString& library)
{
    m_libraryWindow->show();
    m_controller->applicationDidFinishLaunching();
    if (!library.isEmpty()) {
        m_libraryWindow->openLibrary(library);
        return;
    }
    connect(&m_lookup, &LibraryLookup::found, m_libraryWindow.get(), &LibraryWindow::offer);
    m_lookup.start(m_recent.paths(), Directories::pictures());
}

void DesktopProgram::showConverter()
{
    m_corvaneWindow->show();
    m_corvaneWindow->raise();
    m_corvaneWindow->activateWindow();
}

void DesktopProgram::showAbout()
{
    QMessageBox::about(
        m_libraryWindow.get(),
        tr("About Corvane"),
        tr("<h3>Corvane For iPhoto %1</h3><p>Replaces RAW photos of an iPhoto library by JPEG "
           "copies, so that their space can be had back.</p><p>Free software under the GNU General "
           "Public License, version 3 or later. It comes without any warranty.</p>")
            .arg(QCoreApplication::applicationVersion().toHtmlEscaped()));
}

bool DesktopProgram::mayHideConverter()
{
    // Hidden, the window can be had back from the library window at any time, but a scan is
    // watched here.
    return !m_controller->isScanning() || mayQuit();
}

bool DesktopProgram::mayQuit()
{
    if (m_quitting) {
        return !m_controller->isScanning();
    }
    if (!m_controller->isScanning()) {
        m_corvaneWindow->hide();
        emit ended();
        return true;
    }
    if (isToldToStop()) {
        stopAndQuit();
    }
    return false;
}

/// Asks whether the running scan is to be stopped. Who asks while it is being asked gets the same
/// answer.
bool DesktopProgram::isToldToStop()
{
    if (m_question) {
        const QPointer<QMessageBox> asked = m_question;
        QEventLoop loop;
        connect(asked, &QDialog::finished, &loop, &QEventLoop::quit);
        loop.exec();
        return asked != nullptr && saysStop(*asked);
    }
    QMessageBox box(QMessageBox::Question,
                    tr("Corvane"),
                    tr("A scan is running. Stop it and quit?"),
                    QMessageBox::NoButton,
                    QApplication::activeWindow());
    box.setObjectName(u"quitQuestion"_s);
    box.setInformativeText(tr("It stops before the next photo is taken into the library. What was "
                              "converted so far stays; every other original stays as it is."));
    QPushButton* const keep = box.addButton(tr("&Keep Scanning"), QMessageBox::RejectRole);
    box.addButton(tr("&Stop and Quit"), kStopRole);
    box.setDefaultButton(keep);
    box.setEscapeButton(keep);
    m_question = &box;
    box.exec();
    return saysStop(box);
}

void DesktopProgram::stopAndQuit()
{
    if (m_quitting) {
        return;
    }
    m_quitting = true;
    m_session.requestStop();
    // Nobody answers what the scan still has to ask; also one that is about to begin.
    m_presenter.stop();
    if (m_question) {
        m_question->reject();
    }
    if (!m_controller->isScanning()) {
        quit();
        return;
    }
    setWindowsEnabled(false);
    m_corvaneWindow->setWindowTitle(tr("Stopping…"));
}

bool DesktopProgram::mayEndSession(bool mayAsk)
{
    if (m_controller->isScanning()) {
        if (mayAsk && !m_quitting && !isToldToStop() && !m_quitting) {
            return false;
        }
        stopAndQuit();
    }
    m_session.stopChecking();
    // The session waits for the answer, and then for nothing more: nothing is begun meanwhile.
    setWindowsEnabled(false);
    QEventLoop loop;
    while (m_controller->isScanning() || m_session.isBusy()) {
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    // Somebody else may refuse the end of the session.
    setWindowsEnabled(!m_quitting);
    return true;
}

void DesktopProgram::setWindowsEnabled(bool enabled)
{
    m_libraryWindow->setEnabled(enabled);
    m_corvaneWindow->setEnabled(enabled);
}

void DesktopProgram::quit()
{
    m_quitting = true;
    m_corvaneWindow->hide();
    m_libraryWindow->hide();
    emit ended();
}
