#pragma once

#include <QElapsedTimer>
#include <QString>

class Console;

/// Progress of a walk that the command itself makes over a number of items. On a terminal that
/// cannot redraw, a line an item.
class WalkProgress final
{
    Q_DISABLE_COPY_MOVE(WalkProgress)
public:
    /// How much is shown.
    enum class Show : quint8 { Nothing, Progress };

    WalkProgress(Console& console, qint64 total, Show show);
    ~WalkProgress();

    /// Says that work on the next item begins; drawn at most ten times a second.
    void advance(const QString& activity, const QString& name);

private:
    Console& m_console;
    qint64 m_position{0};
    const qint64 m_total;
    const Show m_show;
    QElapsedTimer m_sinceDrawn;
};
