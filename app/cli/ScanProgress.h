#pragma once

#include "PhotoOutcome.h"

#include <QObject>
#include <QTimer>

class Console;
class CorvaneAppDelegate;

/// Shows on a terminal how far a scan is: one line drawn again at most ten times a second, or,
/// where lines cannot be drawn again, a line a photo. Elsewhere it shows nothing.
/// Thread: main.
class ScanProgress final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ScanProgress)
public:
    /// Follows the controller's controls from now on; both outlive this object.
    ScanProgress(CorvaneAppDelegate& controller, Console& console);
    ~ScanProgress() override;

private:
    void follow(CorvaneAppDelegate& controller);
    void drawSoon();
    void draw();
    void sayFinished(const PhotoOutcome& outcome);

    CorvaneAppDelegate& m_controller;
    Console& m_console;
    QTimer m_timer; ///< draws the last state once the pause is over
};
