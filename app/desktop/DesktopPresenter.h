#pragma once

#include "Presenter.h"

#include <QCoreApplication>
#include <QList>
#include <QPointer>

class CorvaneWindow;
class QDialog;
class QMessageBox;

/// Shows what the controller wants shown as sheets, alerts and open panels of the main window.
/// Main thread only.
class DesktopPresenter final : public Presenter
{
    Q_DECLARE_TR_FUNCTIONS(DesktopPresenter)
public:
    /// The window that sheets belong to; nothing is asked of it before it is known or after it is
    /// gone.
    void setWindow(CorvaneWindow* window);
    /// The program ends: nobody is asked any more. What is up is taken away; from now on an open
    /// panel is answered with OK and nothing picked, a sheet is not shown, and an alert that waits
    /// for an answer raises.
    void stop();

    void beginSheet(const Alert& alert) override;
    /// Raises ScriptingException once the program ends.
    void runModal(const Alert& alert) override;
    [[nodiscard]] OpenPanelResult runModal(const OpenPanel& panel) override;
    void beginFixedSizeSheet() override;
    void endFixedSizeSheet() override;
    void commitEditing(Field field) override;

private:
    [[nodiscard]] QMessageBox* makeAlert(const Alert& alert) const;
    /// Runs the dialog until it is answered, or the program ends.
    int runDialog(QDialog& dialog);

    QPointer<CorvaneWindow> m_window;
    QList<QPointer<QDialog>> m_shown;
    bool m_stopped{false};
};
