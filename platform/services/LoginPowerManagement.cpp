#include "LoginPowerManagement.h"

#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QDeadlineTimer>

#include <optional>

using namespace Qt::StringLiterals;

namespace
{

constexpr quint32 kLevelOn = 255;
/// "Inhibit the session being marked as idle" (gnome-session, org.gnome.SessionManager).
constexpr quint32 kGnomeInhibitIdle = 8;

/// A service that takes inhibitor requests and gives a number to release each with.
struct Inhibitor {
    QString service;
    QString path;
    QString interface;
    QString releaseMember;
};

Inhibitor screenSaver()
{
    return {u"org.freedesktop.ScreenSaver"_s,
            u"/org/freedesktop/ScreenSaver"_s,
            u"org.freedesktop.ScreenSaver"_s,
            u"UnInhibit"_s};
}

Inhibitor gnomeSession()
{
    return {u"org.gnome.SessionManager"_s,
            u"/org/gnome/SessionManager"_s,
            u"org.gnome.SessionManager"_s,
            u"Uninhibit"_s};
}

QDBusMessage messageFor(const Inhibitor& inhibitor, const QString& member)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        inhibitor.service, inhibitor.path, inhibitor.interface, member);
    // A service that does not run inhibits nothing; starting one would only take time.
    message.setAutoStartService(false);
    return message;
}

std::optional<quint32> cookieOf(QDBusPendingReply<quint32> reply)
{
    reply.waitForFinished();
    return reply.isError() ? std::nullopt : std::optional(reply.value());
}

} // namespace

/// What the services gave for one assertion. Its session connection is its own: closing it takes
/// back also what was given too late to be noticed.
struct LoginPowerManagement::Assertion {
    explicit Assertion(const BusAddresses& addresses)
        : session(addresses.session)
    {
    }

    /// Asks everybody at once, so that the slowest decides how long it takes. False when nobody
    /// took it.
    bool take(const QString& systemAddress, const QString& name)
    {
        BusConnection system(systemAddress);
        QDBusPendingReply<QDBusUnixFileDescriptor> login;
        QDBusPendingReply<quint32> saver;
        QDBusPendingReply<quint32> gnome;
        if (system.isConnected()) {
            QDBusMessage inhibit = messageFor({u"org.freedesktop.login1"_s,
                                               u"/org/freedesktop/login1"_s,
                                               u"org.freedesktop.login1.Manager"_s,
                                               {}},
                                              u"Inhibit"_s);
            inhibit.setArguments({u"idle"_s, u"Corvane"_s, name, u"block"_s});
            login = system.bus().asyncCall(inhibit, BusConnection::kMostMilliseconds);
        }
        if (session.isConnected()) {
            QDBusMessage inhibit = messageFor(screenSaver(), u"Inhibit"_s);
            inhibit.setArguments({u"Corvane"_s, name});
            saver = session.bus().asyncCall(inhibit, BusConnection::kMostMilliseconds);
            inhibit = messageFor(gnomeSession(), u"Inhibit"_s);
            inhibit.setArguments({u"Corvane"_s, quint32{0}, name, kGnomeInhibitIdle});
            gnome = session.bus().asyncCall(inhibit, BusConnection::kMostMilliseconds);
            saverCookie = cookieOf(saver);
            gnomeCookie = cookieOf(gnome);
        }
        if (system.isConnected()) {
            login.waitForFinished();
            loginLock = login.isError() ? QDBusUnixFileDescriptor() : login.value();
        }
        return loginLock.isValid() || saverCookie.has_value() || gnomeCookie.has_value();
    }

    void release()
    {
        const QDeadlineTimer deadline(BusConnection::kMostMilliseconds);
        giveBack(screenSaver(), saverCookie, deadline);
        giveBack(gnomeSession(), gnomeCookie, deadline);
    }

    void giveBack(const Inhibitor& inhibitor,
                  const std::optional<quint32>& cookie,
                  const QDeadlineTimer& deadline)
    {
        if (!cookie.has_value() || !session.isConnected() || deadline.hasExpired()) {
            return;
        }
        QDBusMessage message = messageFor(inhibitor, inhibitor.releaseMember);
        message.setArguments({*cookie});
        session.bus().call(message, QDBus::Block, static_cast<int>(deadline.remainingTime()));
    }

    BusConnection session;
    QDBusUnixFileDescriptor loginLock; ///< the login manager's lock lasts while this is open
    std::optional<quint32> saverCookie;
    std::optional<quint32> gnomeCookie;
};

LoginPowerManagement::LoginPowerManagement(BusAddresses addresses)
    : m_addresses(std::move(addresses))
{
}

LoginPowerManagement::~LoginPowerManagement() = default;

qint32 LoginPowerManagement::createAssertion(const QString& type,
                                             quint32 level,
                                             const QString& name,
                                             quint32& assertionId)
{
    if (type != "NoIdleSleepAssertion"_L1 || level != kLevelOn) {
        return kUnsupported;
    }
    auto assertion = std::make_unique<Assertion>(m_addresses);
    if (!assertion->take(m_addresses.system, name)) {
        return kNotTaken;
    }
    const std::lock_guard guard(m_mutex);
    assertionId = ++m_lastId;
    m_held.emplace(assertionId, std::move(assertion));
    return 0;
}

void LoginPowerManagement::releaseAssertion(quint32 assertionId)
{
    std::unique_ptr<Assertion> assertion;
    {
        const std::lock_guard guard(m_mutex);
        const auto found = m_held.find(assertionId);
        if (found == m_held.end()) {
            return;
        }
        assertion = std::move(found->second);
        m_held.erase(found);
    }
    assertion->release();
}
