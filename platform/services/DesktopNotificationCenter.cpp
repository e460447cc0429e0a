#include "DesktopNotificationCenter.h"

#include "ApplicationId.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QStringList>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace
{

/// The service's own choice of how long a notification stays.
constexpr int kUsualExpiry = -1;

QDBusMessage messageFor(const QString& member)
{
    return QDBusMessage::createMethodCall(u"org.freedesktop.Notifications"_s,
                                          u"/org/freedesktop/Notifications"_s,
                                          u"org.freedesktop.Notifications"_s,
                                          member);
}

} // namespace

DesktopNotificationCenter::DesktopNotificationCenter(BusAddresses addresses)
    : m_addresses(std::move(addresses))
{
}

void DesktopNotificationCenter::setShouldPresent(
    std::function<bool(const UserNotification&)> shouldPresent)
{
    const std::lock_guard guard(m_mutex);
    m_shouldPresent = std::move(shouldPresent);
}

void DesktopNotificationCenter::deliver(const UserNotification& notification)
{
    std::function<bool(const UserNotification&)> shouldPresent;
    {
        const std::lock_guard guard(m_mutex);
        shouldPresent = m_shouldPresent;
    }
    if (shouldPresent && !shouldPresent(notification)) {
        return;
    }
    BusConnection session(m_addresses.session);
    if (!session.isConnected()) {
        return;
    }
    const QDeadlineTimer deadline(BusConnection::kMostMilliseconds);
    const QDBusReply<QStringList> capabilities = session.bus().call(
        messageFor(u"GetCapabilities"_s), QDBus::Block, BusConnection::kMostMilliseconds);
    if (!capabilities.isValid() || deadline.hasExpired()) {
        return;
    }
    // A service that reads markup would take "<" and "&" of a file name for its own.
    const bool readsMarkup = capabilities.value().contains(u"body-markup"_s);
    const QString body =
        readsMarkup ? notification.informativeText.toHtmlEscaped() : notification.informativeText;
    QVariantMap hints{{u"desktop-entry"_s, applicationId()}};
    if (notification.defaultSound) {
        hints.insert(u"sound-name"_s, u"message-new-instant"_s);
    }
    QDBusMessage notify = messageFor(u"Notify"_s);
    notify.setArguments({u"Corvane"_s,
                         quint32{0},
                         applicationId(),
                         notification.title,
                         body,
                         QStringList(),
                         hints,
                         kUsualExpiry});
    session.bus().call(notify, QDBus::Block, static_cast<int>(deadline.remainingTime()));
}
