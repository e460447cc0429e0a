#pragma once

#include <QObject>

#include <atomic>

/// A push button's state. Threads: any may read and write; the signal is emitted on the writer's.
class Button final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Button)
public:
    using QObject::QObject;

    void setEnabled(bool enabled);

    [[nodiscard]] bool isEnabled() const { return m_enabled; }

signals:
    void enabledChanged(bool enabled);

private:
    std::atomic<bool> m_enabled{true};
};
