#pragma once

#include "ForecastSelection.h"
#include "PressForecast.h"

#include <QWidget>

#include <functional>

class CorvaneAppDelegate;
class FixedSizeSheet;
class ForecastLabel;
class QBoxLayout;
class QLayout;
class QPushButton;
class ScanClosingView;
class UserDefaults;

/// The main window "Corvane For iPhoto": output settings, switches, what the next press of the scan
/// button will do, the progress of a scan and what is to be told after it. Widgets are named as the
/// controller names its outlets and settings. Everything stays usable while a scan runs but the
/// scan button.
class CorvaneWindow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CorvaneWindow)
public:
    /// `controller` and `defaults` outlive the window; the controller has been woken.
    CorvaneWindow(CorvaneAppDelegate& controller,
                  UserDefaults& defaults,
                  QWidget* parent = nullptr);

    /// Asked when the window is about to close; NO keeps it open. Empty: it closes.
    void setMayClose(std::function<bool()> mayClose) { m_mayClose = std::move(mayClose); }

    /// What is selected now; the forecast follows.
    void setSelectionFacts(const ForecastSelection& selection);

    /// What is to be told of single photos after the last scan.
    [[nodiscard]] ScanClosingView& scanClosing() { return *m_scanClosing; }

    [[nodiscard]] FixedSizeSheet& fixedSizeSheet() { return *m_fixedSizeSheet; }

public slots:
    /// Says anew what the next press will do.
    void updateForecast();

signals:
    /// A scan is about to be asked for; who is connected directly can still settle what it reads.
    void scanRequested();

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    [[nodiscard]] QLayout* makeSelectionRow();
    [[nodiscard]] QWidget* makePictureBox();
    [[nodiscard]] QWidget* makeSwitchBox();
    [[nodiscard]] QWidget* makeForecastBox();
    [[nodiscard]] QLayout* makeButtons();
    [[nodiscard]] QPushButton*
    addButton(QBoxLayout* layout, const QString& outlet, const QString& title);
    void watchSettings();
    [[nodiscard]] ForecastSettings settings() const;

    CorvaneAppDelegate& m_controller;
    UserDefaults& m_defaults;
    ForecastSelection m_selection;
    std::function<bool()> m_mayClose;
    FixedSizeSheet* m_fixedSizeSheet;
    ForecastLabel* m_forecast;
    ScanClosingView* m_scanClosing;
};
