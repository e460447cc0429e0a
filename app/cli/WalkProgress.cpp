#include "WalkProgress.h"

#include "CommandLineTexts.h"
#include "Console.h"
#include "ProgressLine.h"

WalkProgress::WalkProgress(Console& console, qint64 total, Show show)
    : m_console(console)
    , m_total(total)
    , m_show(console.isTerminal() ? show : Show::Nothing)
{
}

WalkProgress::~WalkProgress()
{
    m_console.clearStatus();
}

void WalkProgress::advance(const QString& activity, const QString& name)
{
    ++m_position;
    if (m_show == Show::Nothing) {
        return;
    }
    if (!m_console.canRedraw()) {
        m_console.say(CommandLineTexts::photoFinished(m_position, m_total, name));
        return;
    }
    if (m_sinceDrawn.isValid() &&
        m_sinceDrawn.elapsed() < ProgressLine::kShortestPauseMilliseconds) {
        return;
    }
    m_sinceDrawn.start();
    m_console.showStatus(ProgressLine::render({.activity = activity,
                                               .position = m_position,
                                               .total = m_total,
                                               .timeRemaining = {},
                                               .name = name},
                                              m_console.columns()));
}
