#pragma once

#include <QPlainTextEdit>
#include <QPointer>

class ZTBCrashReporterWindowController;

/// Where the person says what led up to the crash: shows and fills the controller's comments. Tab
/// and Shift+Tab are put to the controller and enter no text.
class CommentsView final : public QPlainTextEdit
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CommentsView)
public:
    explicit CommentsView(ZTBCrashReporterWindowController& controller, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] QSize heightOfLines(int lines) const;
    void setPointSize(double points);

    QPointer<ZTBCrashReporterWindowController> m_controller;
};
