#pragma once

#include <QString>
#include <QStringList>

/// An alert: warning style, one button "OK".
struct Alert {
    QString messageText;     ///< the title
    QString informativeText; ///< the message
    friend bool operator==(const Alert&, const Alert&) = default;
};

/// An open panel and what it asks for.
struct OpenPanel {
    QString title;
    QString message;
    QString directory;         ///< where it starts
    bool canChooseFiles{true}; ///< a library package counts as a file
    bool canChooseDirectories{false};
    QStringList allowedFileTypes; ///< extensions without dot; "" = none; empty list = any
};

/// How a panel or modal session ended.
inline constexpr qint64 kPanelCancel = 0;
inline constexpr qint64 kPanelOk = 1;

struct OpenPanelResult {
    qint64 code{kPanelCancel};
    QStringList paths; ///< what was picked; may be empty also with OK
};

/// Shows what the controller wants shown: windows on a desktop, lines on a terminal, a script in
/// tests. Every method is called on the main thread.
class Presenter
{
public:
    virtual ~Presenter() = default;
    /// Attaches the alert to the main window and returns; the user dismisses it later.
    virtual void beginSheet(const Alert& alert) = 0;
    /// Shows the alert above everything and returns when the user has pressed "OK".
    virtual void runModal(const Alert& alert) = 0;
    [[nodiscard]] virtual OpenPanelResult runModal(const OpenPanel& panel) = 0;
    /// Puts the fixed-size sheet on the main window, or takes it away.
    virtual void beginFixedSizeSheet() = 0;
    virtual void endFixedSizeSheet() = 0;
    /// Which field's window is meant by commitEditing().
    enum class Field : quint8 { LongSide, ShortSide };
    /// Ends editing in the window of that field: a value being typed reaches its setter.
    virtual void commitEditing(Field field) = 0;
};
