#include "WallClock.h"

#include "QtPrinters.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

QString shown(double date, const QString& zone = {})
{
    return WallClock::of(date, zone).toString(u"yyyy-MM-ddTHH:mm:ss.zzz"_s);
}

/// Whether somebody opens a file while it lives.
class OpeningWatch final
{
public:
    explicit OpeningWatch(const QString& path)
        : m_events(::inotify_init1(IN_NONBLOCK))
    {
        EXPECT_GE(::inotify_add_watch(m_events, QFile::encodeName(path).constData(), IN_OPEN), 0);
    }

    OpeningWatch(const OpeningWatch&) = delete;
    OpeningWatch& operator=(const OpeningWatch&) = delete;

    ~OpeningWatch() { ::close(m_events); }

    [[nodiscard]] bool wasOpened() const
    {
        std::array<char, 4096> events{};
        return ::read(m_events, events.data(), events.size()) > 0;
    }

private:
    int m_events;
};

} // namespace

TEST(WallClock, aMomentIsShownInItsZone)
{
    EXPECT_EQ(shown(561115092.9), u"2018-10-13T09:18:12.900"_s);
    EXPECT_EQ(shown(561115092.9, u"GMT"_s), u"2018-10-13T09:18:12.900"_s);
    EXPECT_EQ(shown(561115092.9, u"Europe/Berlin"_s), u"2018-10-13T11:18:12.900"_s);
    EXPECT_EQ(shown(561115092.9, u"Etc/GMT+5"_s), u"2018-10-13T04:18:12.900"_s);
    EXPECT_EQ(shown(561115092.9, u"no such zone"_s), u"2018-10-13T09:18:12.900"_s);
}

TEST(WallClock, aDateThatNoCalendarHasIsInvalid)
{
    using Limits = std::numeric_limits<double>;
    for (const double date :
         {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), 1e300, -1e300, 1e13}) {
        EXPECT_FALSE(WallClock::of(date).isValid()) << date;
        EXPECT_FALSE(WallClock::of(date, u"Europe/Berlin"_s).isValid()) << date;
    }
    EXPECT_TRUE(WallClock::of(-1e11).isValid());
}

TEST(WallClock, theNameOfAZoneOpensNoOtherFile)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"pipe"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    const OpeningWatch watch(path);
    EXPECT_EQ(shown(0.0, u"../../.."_s + path), u"2001-01-01T00:00:00.000"_s);
    EXPECT_EQ(shown(0.0, path), u"2001-01-01T00:00:00.000"_s);
    EXPECT_FALSE(watch.wasOpened());
}
