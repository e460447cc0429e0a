#pragma once

#include "Presenter.h"

#include <optional>

class Console;
class Interruption;

/// Shows alerts and panels as lines of a terminal. An alert, title and text, goes to standard
/// error; the closing summary is a result and goes to standard output.
///
/// With a terminal to ask on, application-modal alerts and file prompts wait for Enter. Without
/// one nothing may hang: a file prompt is answered with OK and nothing picked, an alert counts as
/// dismissed, and the one about missing keywords, which is shown until they are there, raises
/// ScriptingException, which ends the scan.
/// Thread: main.
class TerminalPresenter final : public Presenter
{
public:
    /// Where the summary goes: to standard error when a report takes standard output.
    enum class Summary : quint8 { Output, Error };

    /// `library`: what the library prompt is answered with.
    TerminalPresenter(Console& console,
                      const Interruption& interruption,
                      QString library,
                      Summary summary);

    void beginSheet(const Alert& alert) override;
    /// Errors: raises ScriptingException when nobody answers an alert that would come again.
    void runModal(const Alert& alert) override;
    [[nodiscard]] OpenPanelResult runModal(const OpenPanel& panel) override;

    // The terminal has no sheet to type sizes into; they are given as options.
    void beginFixedSizeSheet() override {}

    void endFixedSizeSheet() override {}

    void commitEditing(Field /*field*/) override {}

    /// The alert that stopped the scan: the last one, unless the summary followed it, or the one
    /// that nobody answered.
    [[nodiscard]] const std::optional<Alert>& stopped() const { return m_stopped; }

private:
    [[nodiscard]] bool isAcknowledged() const;

    Console& m_console;
    const Interruption& m_interruption;
    const QString m_library;
    const Summary m_summary;
    std::optional<Alert> m_stopped;
    bool m_raised{false}; ///< what follows is said because of the alert that nobody answered
};
