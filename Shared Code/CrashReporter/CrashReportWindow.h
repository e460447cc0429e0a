#pragma once

#include <QString>

#include <functional>
#include <memory>

/// How a submission ended, as it is told to the person.
struct CrashReportSheet {
    enum class Kind : quint8 { Success, Failure };
    Kind kind{Kind::Failure};
    QString title;
    QString message;
};

/// The window that offers one crash log, as its controller knows it. What the person types and
/// presses reaches the controller through the controller's outlets and actions; a window that is
/// about to close tells windowWillClose(). Main thread.
class CrashReportWindow
{
public:
    virtual ~CrashReportWindow() = default;
    virtual void setTitle(const QString& title) = 0;
    /// Puts the window into the middle of the screen.
    virtual void center() = 0;
    virtual void showWindow() = 0;
    /// Takes the window off the screen without closing it.
    virtual void orderOut() = 0;
    /// Moves the keyboard focus on, or back.
    virtual void selectNextKeyView() = 0;
    virtual void selectPreviousKeyView() = 0;
    /// Attaches a sheet with one button to the window and returns. `didEnd` is called with what
    /// ended it, but not when the window goes first.
    virtual void beginSheet(const CrashReportSheet& sheet,
                            std::function<void(int returnCode)> didEnd) = 0;
    /// The controller is gone, so the window goes too, as soon as it can: it may be closing right
    /// now.
    virtual void release() = 0;
};

struct ReleaseCrashReportWindow {
    void operator()(CrashReportWindow* window) const { window->release(); }
};

/// Owns a window for its controller.
using CrashReportWindowPtr = std::unique_ptr<CrashReportWindow, ReleaseCrashReportWindow>;
