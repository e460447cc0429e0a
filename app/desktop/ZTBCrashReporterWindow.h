#pragma once

#include "CrashReportWindow.h"

#include <QWidget>

class Button;
class QBoxLayout;
class QLayout;
class QPushButton;
class UserDefaults;
class ZTBCrashReporterWindowController;

/// The window "ZTBCrashReporterWindow": the log to read, comments and e-mail address, what is added
/// to a report, and the three things that can be done with it. Widgets are named as the outlets of
/// the controller and the keys of the settings. It can be closed at any time, also while a report
/// is being sent.
class ZTBCrashReporterWindow final : public QWidget, public CrashReportWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ZTBCrashReporterWindow)
public:
    /// `owner` outlives the window or releases it; its log and address are known. `defaults`
    /// outlives the window.
    ZTBCrashReporterWindow(ZTBCrashReporterWindowController& owner, UserDefaults& defaults);
    ~ZTBCrashReporterWindow() override;

    /// The program ends: as closing the window, also where it is hidden.
    void end();

    void setTitle(const QString& title) override;
    void center() override;
    void showWindow() override;
    void orderOut() override;
    void selectNextKeyView() override;
    void selectPreviousKeyView() override;
    void beginSheet(const CrashReportSheet& sheet,
                    std::function<void(int returnCode)> didEnd) override;
    void release() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    [[nodiscard]] QWidget* makeHeading();
    void addLog(QBoxLayout* layout);
    void addComments(QBoxLayout* layout);
    void addChoices(QBoxLayout* layout, UserDefaults& defaults);
    [[nodiscard]] QLayout* makeButtons();
    QPushButton* addButton(QBoxLayout* layout, const QString& name, const QString& title);
    /// A button that follows the outlet of its name.
    void addOutlet(QBoxLayout* layout,
                   const QString& name,
                   const QString& title,
                   const Button& state,
                   std::function<void()> action);
    void showContents();

    /// Null once the controller is gone.
    ZTBCrashReporterWindowController* m_controller;
};
