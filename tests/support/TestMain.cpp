#include <QCoreApplication>
#include <QDir>
#include <QLocale>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// Runs the tests under an application object, in a private home: no test sees the user's own
/// settings, state or session bus. The current folder is that home too, so that a slip with a
/// relative or empty path meets nothing of value.
int main(int argc, char** argv)
{
    const QTemporaryDir home;
    const QByteArray path = home.path().toUtf8();
    qputenv("HOME", path);
    for (const char* name : {"XDG_CONFIG_HOME",
                             "XDG_DATA_HOME",
                             "XDG_STATE_HOME",
                             "XDG_CACHE_HOME",
                             "XDG_RUNTIME_DIR",
                             "DBUS_SESSION_BUS_ADDRESS"}) {
        qunsetenv(name);
    }
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent");
    QLocale::setDefault(QLocale::c());
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    if (!QDir::setCurrent(home.path())) {
        return 1;
    }
    return RUN_ALL_TESTS();
}
