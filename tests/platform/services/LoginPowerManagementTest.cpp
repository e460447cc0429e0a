#include "LoginPowerManagement.h"

#include "PrivateBus.h"

#include <QDBusUnixFileDescriptor>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>

using namespace Qt::StringLiterals;

namespace
{

const auto kLoginService = "org.freedesktop.login1"_L1;
const auto kSaverService = "org.freedesktop.ScreenSaver"_L1;
const auto kGnomeService = "org.gnome.SessionManager"_L1;

/// The login manager's end of an inhibitor lock: a pipe whose other end the lock's holder has.
class Lock final
{
public:
    Lock() { EXPECT_EQ(::pipe2(m_ends.data(), O_CLOEXEC | O_NONBLOCK), 0); }

    ~Lock()
    {
        ::close(m_ends[0]);
        closeGiven();
    }

    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    QVariantList give()
    {
        const QVariant descriptor = QVariant::fromValue(QDBusUnixFileDescriptor(m_ends[1]));
        return {descriptor};
    }

    void closeGiven()
    {
        if (m_ends[1] >= 0) {
            ::close(m_ends[1]);
            m_ends[1] = -1;
        }
    }

    [[nodiscard]] bool isHeld() const
    {
        char byte = 0;
        return ::read(m_ends[0], &byte, 1) < 0 && errno == EAGAIN;
    }

    /// Waits until nobody holds the lock any more, the bus with its copies of messages included.
    [[nodiscard]] bool isReleased() const
    {
        pollfd waiting = {m_ends[0], POLLIN, 0};
        return ::poll(&waiting, 1, 5000) == 1 && (waiting.revents & POLLHUP) != 0;
    }

private:
    std::array<int, 2> m_ends{};
};

class LoginPowerManagementTest : public testing::Test
{
protected:
    [[nodiscard]] BusAddresses addresses() const { return {m_bus.address(), m_bus.address()}; }

    static qint32 create(PowerManagement& power, quint32& id)
    {
        return power.createAssertion(
            u"NoIdleSleepAssertion"_s, 255, u"Corvane is converting"_s, id);
    }

    PrivateBus m_bus;
};

TEST_F(LoginPowerManagementTest, theLoginManagersLockLastsUntilTheRelease)
{
    Lock lock;
    MockService login(m_bus.address(),
                      {kLoginService},
                      {{u"org.freedesktop.login1.Manager.Inhibit"_s,
                        [&lock](const QVariantList&) { return lock.give(); }}});
    LoginPowerManagement power(addresses());
    quint32 id = 0;
    ASSERT_EQ(create(power, id), 0);
    EXPECT_NE(id, 0U);
    ASSERT_EQ(login.calls().size(), 1);
    EXPECT_EQ(login.calls().first().arguments,
              (QVariantList{u"idle"_s, u"Corvane"_s, u"Corvane is converting"_s, u"block"_s}));
    lock.closeGiven();
    EXPECT_TRUE(lock.isHeld());
    power.releaseAssertion(id);
    EXPECT_TRUE(lock.isReleased());
}

TEST_F(LoginPowerManagementTest, theScreenSaverGetsItsCookieBack)
{
    MockService saver(m_bus.address(),
                      {kSaverService},
                      {{u"org.freedesktop.ScreenSaver.Inhibit"_s,
                        [](const QVariantList&) { return QVariantList{quint32{77}}; }},
                       {u"org.freedesktop.ScreenSaver.UnInhibit"_s,
                        [](const QVariantList&) { return QVariantList(); }}});
    LoginPowerManagement power(addresses());
    quint32 id = 0;
    ASSERT_EQ(create(power, id), 0);
    power.releaseAssertion(id);
    ASSERT_EQ(saver.members(),
              (QStringList{u"org.freedesktop.ScreenSaver.Inhibit"_s,
                           u"org.freedesktop.ScreenSaver.UnInhibit"_s}));
    EXPECT_EQ(saver.calls().first().arguments,
              (QVariantList{u"Corvane"_s, u"Corvane is converting"_s}));
    EXPECT_EQ(saver.calls().last().arguments, QVariantList{quint32{77}});
}

TEST_F(LoginPowerManagementTest, theGnomeSessionIsAskedNotToGoIdle)
{
    MockService gnome(m_bus.address(),
                      {kGnomeService},
                      {{u"org.gnome.SessionManager.Inhibit"_s,
                        [](const QVariantList&) { return QVariantList{quint32{5}}; }},
                       {u"org.gnome.SessionManager.Uninhibit"_s,
                        [](const QVariantList&) { return QVariantList(); }}});
    LoginPowerManagement power(addresses());
    quint32 id = 0;
    ASSERT_EQ(create(power, id), 0);
    power.releaseAssertion(id);
    ASSERT_EQ(gnome.calls().size(), 2);
    EXPECT_EQ(gnome.calls().first().arguments,
              (QVariantList{u"Corvane"_s, quint32{0}, u"Corvane is converting"_s, quint32{8}}));
    EXPECT_EQ(gnome.calls().last().arguments, QVariantList{quint32{5}});
}

TEST_F(LoginPowerManagementTest, aServiceThatNeverAnswersCostsTwoSecondsAtMost)
{
    // It takes the name and swallows the calls.
    const QString name = QUuid::createUuid().toString();
    QDBusConnection silent = QDBusConnection::connectToBus(m_bus.address(), name);
    MockService saver(m_bus.address(),
                      {kSaverService},
                      {{u"org.freedesktop.ScreenSaver.Inhibit"_s,
                        [](const QVariantList&) { return QVariantList{quint32{1}}; }}});

    class Swallower final : public QDBusVirtualObject
    {
        [[nodiscard]] QString introspect(const QString&) const override { return {}; }

        bool handleMessage(const QDBusMessage&, const QDBusConnection&) override { return true; }
    } swallower;

    silent.registerVirtualObject(u"/"_s, &swallower, QDBusConnection::SubPath);
    ASSERT_TRUE(silent.registerService(kLoginService));
    ASSERT_TRUE(silent.registerService(kGnomeService));

    LoginPowerManagement power(addresses());
    quint32 id = 0;
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(create(power, id), 0) << "the screen saver took it";
    EXPECT_LT(timer.elapsed(), 2900);
    silent.unregisterObject(u"/"_s, QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(name);
}

TEST_F(LoginPowerManagementTest, aRefusalByAllIsNoAssertion)
{
    LoginPowerManagement power(addresses());
    quint32 id = 42;
    EXPECT_EQ(create(power, id), LoginPowerManagement::kNotTaken);
    EXPECT_EQ(id, 42U);
}

TEST_F(LoginPowerManagementTest, destructionGivesEverythingBack)
{
    Lock lock;
    MockService login(m_bus.address(),
                      {kLoginService},
                      {{u"org.freedesktop.login1.Manager.Inhibit"_s,
                        [&lock](const QVariantList&) { return lock.give(); }}});
    {
        LoginPowerManagement power(addresses());
        quint32 id = 0;
        ASSERT_EQ(create(power, id), 0);
        lock.closeGiven();
        EXPECT_TRUE(lock.isHeld());
    }
    EXPECT_TRUE(lock.isReleased());
}

TEST(LoginPowerManagement, withoutAnyBusNothingIsTakenAndNothingPrinted)
{
    testing::internal::CaptureStderr();
    LoginPowerManagement power(BusAddresses{});
    LoginPowerManagement dead(
        BusAddresses{u"unix:path=/nonexistent/a"_s, u"unix:path=/nonexistent/b"_s});
    quint32 id = 0;
    EXPECT_NE(power.createAssertion(u"NoIdleSleepAssertion"_s, 255, u"name"_s, id), 0);
    EXPECT_NE(dead.createAssertion(u"NoIdleSleepAssertion"_s, 255, u"name"_s, id), 0);
    power.releaseAssertion(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(LoginPowerManagement, otherAssertionsAreUnsupported)
{
    LoginPowerManagement power(BusAddresses{});
    quint32 id = 0;
    EXPECT_EQ(power.createAssertion(u"NoDisplaySleepAssertion"_s, 255, u"name"_s, id),
              LoginPowerManagement::kUnsupported);
    EXPECT_EQ(power.createAssertion(u"NoIdleSleepAssertion"_s, 0, u"name"_s, id),
              LoginPowerManagement::kUnsupported);
}

} // namespace
