#pragma once

#include <QString>

#include <functional>

struct UserNotification {
    QString title;
    QString informativeText;
    bool defaultSound{false};
    friend bool operator==(const UserNotification&, const UserNotification&) = default;
};

/// Delivers notifications to the user. Any thread.
class UserNotificationCenter
{
public:
    virtual ~UserNotificationCenter() = default;
    /// Asked (on the delivering thread) before a notification is shown while the application is
    /// frontmost; none set means yes.
    virtual void setShouldPresent(std::function<bool(const UserNotification&)> shouldPresent) = 0;
    /// Delivers, or does nothing where no service takes it.
    virtual void deliver(const UserNotification& notification) = 0;
};
