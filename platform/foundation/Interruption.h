#pragma once

#include <QObject>

#include <atomic>

/// The user's wish to stop, asked once and kept for the rest of the run.
/// Thread: request() and isRequested() any; the signal reaches its receivers on their threads.
class Interruption final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Interruption)
public:
    explicit Interruption(QObject* parent = nullptr);

    /// Keeps the wish and tells of it; a second call changes nothing.
    void request();

    [[nodiscard]] bool isRequested() const { return m_requested.load(); }

Q_SIGNALS:
    void requested();

private:
    std::atomic<bool> m_requested{false};
};
