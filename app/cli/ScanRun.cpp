#include "ScanRun.h"

#include "CorvaneAppDelegate.h"
#include "Interruption.h"
#include "PhotoLibrary.h"
#include "ScanOutcomes.h"
#include "ScanProgress.h"
#include "ScanSettings.h"
#include "Texts.h"

#include <QEventLoop>

ScanRun::ScanRun(PhotoLibrary& library,
                 UserDefaults& defaults,
                 const CommandServices& services,
                 const Options& options)
    : m_library(library)
    , m_defaults(defaults)
    , m_services(services)
    , m_options(options)
{
}

ScanRun::Ending ScanRun::run(const QList<qint64>& selection)
{
    Console& console = m_services.console;
    Ending ending;
    TerminalPresenter presenter(
        console, m_services.interruption, m_library.path(), m_options.summary);
    CorvaneAppDelegate controller(ControllerServices{
        .bridge = m_library,
        .defaults = m_defaults,
        .bundle = m_services.bundle,
        .presenter = presenter,
        .workspace = m_services.workspace,
        .power = m_services.power,
        .notifications = m_services.notifications,
        .clock = m_services.clock,
        .checkForNewCrashes = {},
    });
    controller.awakeFromNib();
    touchOutputSize(controller);
    controller.applicationDidFinishLaunching();
    m_library.setSelection(selection);

    const ScanOutcomes outcomes(controller);
    QObject::connect(
        &controller, &CorvaneAppDelegate::alertShown, &controller, [&ending](const Alert& alert) {
            ending.finished = alert.messageText == Texts::allDoneTitle();
        });
    stopOnInterruption(controller);
    std::optional<ScanProgress> progress;
    if (m_options.showProgress) {
        progress.emplace(controller, console);
    }
    QEventLoop loop;
    controller.selectionScan(nullptr);
    while (controller.isScanning()) {
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    ending.outcomes = outcomes.photos();
    ending.stopped = presenter.stopped();
    return ending;
}

void ScanRun::touchOutputSize(CorvaneAppDelegate& controller) const
{
    Matrix& matrix = controller.outputSizeMatrix();
    const int index = outputSizeIndex(m_defaults);
    matrix.setSelectedIndex(index);
    matrix.click(index);
    if (controller.fixedSize()) {
        controller.dismissFixedSizePanel(&matrix);
    }
}

void ScanRun::stopOnInterruption(CorvaneAppDelegate& controller)
{
    const auto stop = [this, &controller] {
        m_library.requestStop();
        controller.setCancelled(true);
    };
    // The controller is the context: with it the connection ends.
    QObject::connect(&m_services.interruption, &Interruption::requested, &controller, stop);
    if (m_services.interruption.isRequested()) {
        stop();
    }
}
