#include "DesktopNotificationCenter.h"

#include "PrivateBus.h"

#include <QDBusArgument>
#include <QDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class DesktopNotificationCenterTest : public testing::Test
{
protected:
    [[nodiscard]] std::unique_ptr<MockService> service(const QStringList& capabilities) const
    {
        return std::make_unique<MockService>(
            m_bus.address(),
            QStringList{u"org.freedesktop.Notifications"_s},
            QHash<QString, MockService::Answer>{
                {u"org.freedesktop.Notifications.GetCapabilities"_s,
                 [capabilities](const QVariantList&) { return QVariantList{capabilities}; }},
                {u"org.freedesktop.Notifications.Notify"_s,
                 [](const QVariantList&) { return QVariantList{quint32{1}}; }}});
    }

    PrivateBus m_bus;
};

QVariantMap hintsOf(const MockService::Call& call)
{
    return qdbus_cast<QVariantMap>(call.arguments.at(6));
}

TEST_F(DesktopNotificationCenterTest, titleTextAndSoundReachTheService)
{
    const auto mock = service({u"body"_s});
    DesktopNotificationCenter center(BusAddresses{QString(), m_bus.address()});
    center.deliver({u"All Done"_s, u"You saved <1> MB & more"_s, true});
    ASSERT_EQ(mock->members().last(), u"org.freedesktop.Notifications.Notify"_s);
    const MockService::Call call = mock->calls().last();
    EXPECT_EQ(call.arguments.at(0).toString(), u"Corvane"_s);
    EXPECT_EQ(call.arguments.at(3).toString(), u"All Done"_s);
    EXPECT_EQ(call.arguments.at(4).toString(), u"You saved <1> MB & more"_s);
    EXPECT_EQ(hintsOf(call).value(u"sound-name"_s).toString(), u"message-new-instant"_s);
    EXPECT_EQ(call.arguments.at(7).toInt(), -1);
}

TEST_F(DesktopNotificationCenterTest, iconAndDesktopEntryAreThoseOfTheInstalledProgram)
{
    const auto mock = service({u"body"_s});
    DesktopNotificationCenter center(BusAddresses{QString(), m_bus.address()});
    center.deliver({u"All Done"_s, u"text"_s, false});
    ASSERT_FALSE(mock->calls().isEmpty());
    const MockService::Call call = mock->calls().last();
    const QString icon = call.arguments.at(2).toString();
    const QString entry = hintsOf(call).value(u"desktop-entry"_s).toString();
    const QDir resources(QStringLiteral(CORVANE_RESOURCES));
    EXPECT_TRUE(resources.exists(u"icons/%1.svg"_s.arg(icon))) << icon.toStdString();
    EXPECT_TRUE(resources.exists(u"desktop/%1.desktop"_s.arg(entry))) << entry.toStdString();
}

TEST_F(DesktopNotificationCenterTest, aServiceThatReadsMarkupGetsTheTextEscaped)
{
    const auto mock = service({u"body"_s, u"body-markup"_s});
    DesktopNotificationCenter center(BusAddresses{QString(), m_bus.address()});
    center.deliver({u"All Done"_s, u"<1> & more"_s, false});
    ASSERT_FALSE(mock->calls().isEmpty());
    const MockService::Call call = mock->calls().last();
    EXPECT_EQ(call.arguments.at(4).toString(), u"&lt;1&gt; &amp; more"_s);
    EXPECT_FALSE(hintsOf(call).contains(u"sound-name"_s));
}

TEST_F(DesktopNotificationCenterTest, whatShouldNotBePresentedIsNotDelivered)
{
    const auto mock = service({});
    DesktopNotificationCenter center(BusAddresses{QString(), m_bus.address()});
    center.setShouldPresent(
        [](const UserNotification& notification) { return notification.title == "yes"_L1; });
    center.deliver({u"no"_s, QString(), false});
    EXPECT_TRUE(mock->calls().isEmpty());
    center.deliver({u"yes"_s, QString(), false});
    EXPECT_FALSE(mock->calls().isEmpty());
}

TEST_F(DesktopNotificationCenterTest, withoutAServiceOrABusNothingHappensAndNothingIsPrinted)
{
    testing::internal::CaptureStderr();
    for (const QString& address : {m_bus.address(), QString(), u"unix:path=/nonexistent"_s}) {
        DesktopNotificationCenter center(BusAddresses{QString(), address});
        center.deliver({u"All Done"_s, u"text"_s, true});
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
