#pragma once

#include "Bundle.h"
#include "Clock.h"
#include "CorvaneAppDelegate.h"
#include "CorvaneWindow.h"
#include "CrashReporting.h"
#include "DesktopNotificationCenter.h"
#include "DesktopPresenter.h"
#include "DesktopWorkspace.h"
#include "LibraryLookup.h"
#include "LibrarySession.h"
#include "LibraryWindow.h"
#include "LoginPowerManagement.h"
#include "RecentLibraries.h"
#include "ScanOutcomes.h"
#include "UserDefaults.h"

#include <QMessageBox>
#include <QObject>
#include <QPointer>

#include <memory>

/// The desktop program as a whole: library, controller and windows, and what happens between them.
/// Main thread.
class DesktopProgram final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DesktopProgram)
public:
    /// `settingsFile`: empty for the user's own.
    explicit DesktopProgram(const QString& settingsFile, QObject* parent = nullptr);
    /// Waits for a running scan, which is asked to stop.
    ~DesktopProgram() override;

    /// Shows the windows and opens a library: the one given; else, offers those that it finds.
    void start(const QString& library);
    /// Ends the program, which ended() tells: at once, or when a running scan has followed the
    /// request to stop between two photos. Nobody is asked; a second call changes nothing.
    void stopAndQuit();
    /// The person's session on the machine is about to end: stops a running scan and waits for it.
    /// `mayAsk`: the person is asked first. NO when the person wants the scan to go on.
    [[nodiscard]] bool mayEndSession(bool mayAsk);

    [[nodiscard]] CorvaneAppDelegate& controller() { return *m_controller; }

    [[nodiscard]] LibrarySession& session() { return m_session; }

    [[nodiscard]] LibraryWindow& libraryWindow() { return *m_libraryWindow; }

    [[nodiscard]] CorvaneWindow& corvaneWindow() { return *m_corvaneWindow; }

    [[nodiscard]] const CrashReporting& crashReporting() const { return m_crashReporting; }

signals:
    /// Every window is closed and no scan runs.
    void ended();

private:
    void makeWindows();
    void followLibrary();
    void followScan();
    void resetControls();
    void showConverter();
    void showAbout();
    [[nodiscard]] bool mayQuit();
    [[nodiscard]] bool mayHideConverter();
    [[nodiscard]] bool isToldToStop();
    void setWindowsEnabled(bool enabled);
    void quit();

    const Bundle m_bundle;
    UserDefaults m_defaults;
    RecentLibraries m_recent;
    SystemClock m_clock;
    DesktopWorkspace m_workspace;
    LoginPowerManagement m_power;
    DesktopNotificationCenter m_notifications;
    DesktopPresenter m_presenter;
    LibraryLookup m_lookup;
    LibrarySession m_session;
    CrashReporting m_crashReporting{m_defaults, m_bundle, m_clock};
    std::unique_ptr<CorvaneAppDelegate> m_controller;
    ScanOutcomes m_outcomes{*m_controller};
    std::unique_ptr<CorvaneWindow> m_corvaneWindow;
    std::unique_ptr<LibraryWindow> m_libraryWindow;
    QPointer<QMessageBox> m_question; ///< whether to stop, while it is asked
    bool m_quitting{false};
    bool m_resetOwed{false}; ///< a library was shown while a scan had the controls
};
