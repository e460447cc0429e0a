#pragma once

#include "Command.h"
#include "PhotoOutcome.h"
#include "Presenter.h"
#include "TerminalPresenter.h"

#include <QList>

#include <optional>

class CorvaneAppDelegate;
class PhotoLibrary;
class UserDefaults;

/// One scan of an open library by the controller and its engine, waited for to its end.
/// Thread: main, whose event loop it runs meanwhile.
class ScanRun final
{
public:
    struct Options {
        bool showProgress{true};
        TerminalPresenter::Summary summary{TerminalPresenter::Summary::Output};
    };

    struct Ending {
        bool finished{false};         ///< the summary was shown: every photo had its turn
        std::optional<Alert> stopped; ///< the alert that stopped it
        QList<PhotoOutcome> outcomes; ///< in the order of the selection; empty when none was taken
    };

    /// The library is open for writing; `defaults` holds the settings of the run. All outlive it.
    ScanRun(PhotoLibrary& library,
            UserDefaults& defaults,
            const CommandServices& services,
            const Options& options);

    [[nodiscard]] Ending run(const QList<qint64>& selection);

private:
    void touchOutputSize(CorvaneAppDelegate& controller) const;
    void stopOnInterruption(CorvaneAppDelegate& controller);

    PhotoLibrary& m_library;
    UserDefaults& m_defaults;
    const CommandServices m_services;
    const Options m_options;
};
