#include "TerminalPresenter.h"

#include "CommandLineTexts.h"
#include "Console.h"
#include "Interruption.h"
#include "Scripting.h"
#include "Texts.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

QString linesOf(const Alert& alert)
{
    return alert.messageText + u'\n' + alert.informativeText;
}

} // namespace

TerminalPresenter::TerminalPresenter(Console& console,
                                     const Interruption& interruption,
                                     QString library,
                                     Summary summary)
    : m_console(console)
    , m_interruption(interruption)
    , m_library(std::move(library))
    , m_summary(summary)
{
}

void TerminalPresenter::beginSheet(const Alert& alert)
{
    const bool done = alert.messageText == Texts::allDoneTitle();
    if (done && m_summary == Summary::Output) {
        m_console.print(linesOf(alert));
    } else {
        m_console.say(linesOf(alert));
    }
    if (!m_raised) {
        m_stopped = done ? std::nullopt : std::optional(alert);
    }
}

void TerminalPresenter::runModal(const Alert& alert)
{
    m_console.say(linesOf(alert));
    m_stopped = alert;
    const bool isQuestion = alert.messageText == Texts::missingKeywordsTitle();
    if (isAcknowledged()) {
        if (isQuestion) {
            // Answered: the scan asks again or goes on.
            m_stopped.reset();
        }
        return;
    }
    if (!isQuestion) {
        return;
    }
    m_raised = true;
    throw ScriptingException(u"AlertNotAnswered"_s,
                             m_interruption.isRequested() ? CommandLineTexts::stoppedWhileAsking()
                                                          : CommandLineTexts::nobodyToAnswer());
}

OpenPanelResult TerminalPresenter::runModal(const OpenPanel& panel)
{
    if (panel.allowedFileTypes.contains(u"photolibrary"_s)) {
        return {.code = kPanelOk, .paths = {m_library}};
    }
    m_console.say(panel.title + u'\n' + panel.message);
    // Whatever the answer, also none: who asked tests the access again.
    static_cast<void>(isAcknowledged());
    return {.code = kPanelOk, .paths = {}};
}

bool TerminalPresenter::isAcknowledged() const
{
    if (!m_console.canAsk()) {
        return false;
    }
    m_console.say(CommandLineTexts::pressEnter());
    return m_console.readLine(m_interruption).has_value();
}
