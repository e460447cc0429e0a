#pragma once

#include "BusConnection.h"
#include "PowerManagement.h"

#include <map>
#include <memory>
#include <mutex>

/// Idle-sleep assertions as inhibitor locks: of the login manager
/// (org.freedesktop.login1.Manager.Inhibit on the system bus), the screen saver
/// (org.freedesktop.ScreenSaver) and the GNOME session (org.gnome.SessionManager) on the session
/// bus. An assertion stands when at least one of them took it.
/// Any thread. Without any bus nothing is printed and every creation fails.
class LoginPowerManagement final : public PowerManagement
{
public:
    explicit LoginPowerManagement(BusAddresses addresses = BusAddresses::standard());
    ~LoginPowerManagement() override;

    /// No inhibitor lock took it.
    static constexpr qint32 kNotTaken = 1;
    /// Only "NoIdleSleepAssertion" at level 255 is known.
    static constexpr qint32 kUnsupported = 2;

    [[nodiscard]] qint32 createAssertion(const QString& type,
                                         quint32 level,
                                         const QString& name,
                                         quint32& assertionId) override;
    /// An id that is not held does nothing.
    void releaseAssertion(quint32 assertionId) override;

private:
    struct Assertion;

    const BusAddresses m_addresses;
    std::mutex m_mutex;
    std::map<quint32, std::unique_ptr<Assertion>> m_held;
    quint32 m_lastId{0};
};
