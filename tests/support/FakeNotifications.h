#pragma once

#include "UserNotificationCenter.h"

#include <QList>

#include <mutex>

/// Keeps what was delivered, as far as the application wants it presented.
class FakeNotifications final : public UserNotificationCenter
{
public:
    void setShouldPresent(std::function<bool(const UserNotification&)> shouldPresent) override
    {
        const std::lock_guard guard(m_mutex);
        m_shouldPresent = std::move(shouldPresent);
    }

    void deliver(const UserNotification& notification) override
    {
        const std::lock_guard guard(m_mutex);
        if (!m_shouldPresent || m_shouldPresent(notification)) {
            m_delivered.append(notification);
        }
    }

    [[nodiscard]] QList<UserNotification> delivered() const
    {
        const std::lock_guard guard(m_mutex);
        return m_delivered;
    }

    /// Whether somebody asked to decide what is presented.
    [[nodiscard]] bool hasDelegate() const
    {
        const std::lock_guard guard(m_mutex);
        return static_cast<bool>(m_shouldPresent);
    }

private:
    mutable std::mutex m_mutex;
    std::function<bool(const UserNotification&)> m_shouldPresent;
    QList<UserNotification> m_delivered;
};
