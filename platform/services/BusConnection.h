#pragma once

#include <QDBusConnection>
#include <QString>

/// Where the message buses are reached; empty where there is none.
struct BusAddresses {
    QString system;
    QString session;

    /// What the environment says, else the usual sockets where they exist. A session bus is never
    /// launched: a run without a session goes on without one.
    [[nodiscard]] static BusAddresses standard();
};

/// A connection of its own to a message bus, closed at the end of the scope; services take back
/// what they gave to a peer that is gone. Silent where there is no bus. Any thread.
class BusConnection final
{
public:
    /// How long a service may take to answer: a scan does not wait longer for a desktop.
    static constexpr int kMostMilliseconds = 2000;

    /// Connects at once; an empty address connects to nothing.
    explicit BusConnection(const QString& address);
    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    [[nodiscard]] bool isConnected() const { return m_connection.isConnected(); }

    [[nodiscard]] QDBusConnection& bus() { return m_connection; }

private:
    QString m_name;
    QDBusConnection m_connection;
};
