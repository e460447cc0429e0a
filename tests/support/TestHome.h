#pragma once

#include <QByteArray>
#include <QDir>
#include <QLocale>
#include <QTemporaryDir>

/// A private home for the tests of one process: no test sees the user's own settings, state or
/// session bus. The current folder is that home too, so that a slip with a relative or empty path
/// meets nothing of value. Made before the application object.
class TestHome final
{
public:
    TestHome()
    {
        qputenv("HOME", m_folder.path().toUtf8());
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
    }

    /// Whether the current folder is now the home.
    [[nodiscard]] bool enter() const { return QDir::setCurrent(m_folder.path()); }

private:
    QTemporaryDir m_folder;
};
