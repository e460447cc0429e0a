#pragma once

#include "BusConnection.h"
#include "UserNotificationCenter.h"

#include <mutex>

/// Notifications through the desktop's service (Desktop Notifications Specification 1.2,
/// org.freedesktop.Notifications on the session bus). Any thread; a delivery waits for the service
/// for at most two seconds. Silent where there is no bus or no service.
class DesktopNotificationCenter final : public UserNotificationCenter
{
public:
    explicit DesktopNotificationCenter(BusAddresses addresses = BusAddresses::standard());

    void setShouldPresent(std::function<bool(const UserNotification&)> shouldPresent) override;
    void deliver(const UserNotification& notification) override;

private:
    const BusAddresses m_addresses;
    std::mutex m_mutex;
    std::function<bool(const UserNotification&)> m_shouldPresent;
};
