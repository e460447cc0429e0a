#include "BusConnection.h"

#include "PrivateBus.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class BusAddressesTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_system = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        qunsetenv("XDG_RUNTIME_DIR");
    }

    void TearDown() override
    {
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_system);
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        qunsetenv("XDG_RUNTIME_DIR");
    }

    QByteArray m_system;
};

TEST_F(BusAddressesTest, theEnvironmentNamesThem)
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/system");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/session");
    EXPECT_EQ(BusAddresses::standard().system, u"unix:path=/system"_s);
    EXPECT_EQ(BusAddresses::standard().session, u"unix:path=/session"_s);
}

TEST_F(BusAddressesTest, theSessionsUsualSocketCountsWhereItExists)
{
    const QTemporaryDir runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
    EXPECT_TRUE(BusAddresses::standard().session.isEmpty());
    QFile socket(runtime.filePath(u"bus"_s));
    ASSERT_TRUE(socket.open(QIODevice::WriteOnly));
    EXPECT_EQ(BusAddresses::standard().session, u"unix:path="_s + runtime.filePath(u"bus"_s));
}

TEST_F(BusAddressesTest, withoutASessionThereIsNoAddressSoNothingIsLaunched)
{
    EXPECT_TRUE(BusAddresses::standard().session.isEmpty());
}

TEST(BusConnection, noAddressAndADeadOneConnectToNothing)
{
    EXPECT_FALSE(BusConnection(QString()).isConnected());
    EXPECT_FALSE(BusConnection(u"unix:path=/nonexistent/bus"_s).isConnected());
}

TEST(BusConnection, eachIsAPeerOfItsOwn)
{
    const PrivateBus bus;
    BusConnection one(bus.address());
    BusConnection two(bus.address());
    ASSERT_EQ(one.isConnected(), PrivateBus::isInstalled());
    ASSERT_EQ(two.isConnected(), PrivateBus::isInstalled());
    EXPECT_EQ(one.bus().baseService() != two.bus().baseService(), PrivateBus::isInstalled());
}

} // namespace
