#pragma once

#include <QWidget>

class CorvaneAppDelegate;
class QLabel;
class QProgressBar;
class TextField;

/// How far a scan has come: the controller's status and count line, its progress bar and the
/// remaining time.
class ScanProgressView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ScanProgressView)
public:
    /// `controller` outlives the widget.
    explicit ScanProgressView(CorvaneAppDelegate& controller, QWidget* parent = nullptr);

private:
    void makeBar();
    [[nodiscard]] QLabel* makeLine(const QString& outlet, const QString& name, TextField& field);
    [[nodiscard]] QLabel* makeRemainingTime();
    void followBar();

    CorvaneAppDelegate& m_controller;
    QProgressBar* m_bar;
};
