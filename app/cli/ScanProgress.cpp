#include "ScanProgress.h"

#include "CommandLineTexts.h"
#include "Console.h"
#include "CorvaneAppDelegate.h"
#include "ProgressLine.h"
#include "Texts.h"

ScanProgress::ScanProgress(CorvaneAppDelegate& controller, Console& console)
    : m_controller(controller)
    , m_console(console)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(ProgressLine::kShortestPauseMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, &ScanProgress::draw);
    if (console.isTerminal()) {
        follow(controller);
    }
}

ScanProgress::~ScanProgress()
{
    m_console.clearStatus();
}

void ScanProgress::follow(CorvaneAppDelegate& controller)
{
    if (!m_console.canRedraw()) {
        connect(&controller, &CorvaneAppDelegate::photoDone, this, &ScanProgress::sayFinished);
        return;
    }
    // Controls may be set on the scan's thread; this object lives on the main one, so what they
    // tell arrives queued.
    connect(
        &controller.statusLabel(), &TextField::stringValueChanged, this, &ScanProgress::drawSoon);
    connect(
        &controller.countLabel(), &TextField::stringValueChanged, this, &ScanProgress::drawSoon);
    connect(&controller.progressIndicator(),
            &ProgressIndicator::doubleValueChanged,
            this,
            &ScanProgress::drawSoon);
    connect(&controller, &CorvaneAppDelegate::timeRemainingChanged, this, &ScanProgress::drawSoon);
}

void ScanProgress::drawSoon()
{
    if (!m_timer.isActive()) {
        m_timer.start();
    }
}

void ScanProgress::draw()
{
    if (!m_controller.nowProcessing()) {
        m_console.clearStatus();
        return;
    }
    const ProgressIndicator& bar = m_controller.progressIndicator();
    const QString time = m_controller.timeRemaining();
    // Until the photos are taken the label still says what it said before the scan, and the bar's
    // maximum is nobody's number.
    const QString status = m_controller.statusLabel().stringValue();
    const bool isCounting = !bar.isIndeterminate();
    m_console.showStatus(ProgressLine::render(
        {.activity = status.isEmpty() || status == Texts::ready() ? Texts::loadingData() : status,
         .position = isCounting ? static_cast<qint64>(bar.doubleValue()) : 0,
         .total = isCounting ? static_cast<qint64>(bar.maxValue()) : 0,
         .timeRemaining = time == Texts::noTimeRemaining() ? QString() : time,
         .name = m_controller.countLabel().stringValue()},
        m_console.columns()));
}

void ScanProgress::sayFinished(const PhotoOutcome& outcome)
{
    const auto total = static_cast<qint64>(m_controller.progressIndicator().maxValue());
    m_console.say(CommandLineTexts::photoFinished(
        outcome.selectionIndex + 1, total, outcome.source.section(u'/', -1)));
}
