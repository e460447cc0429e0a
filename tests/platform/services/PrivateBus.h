#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QHash>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QThread>
#include <QUuid>

#include <functional>
#include <memory>
#include <mutex>

/// A message bus of the test's own, never the machine's. Not started where dbus-daemon is not
/// installed.
class PrivateBus final
{
public:
    PrivateBus()
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"),
                        QStringLiteral("--print-address"),
                        QStringLiteral("--nofork")});
        if (m_daemon.waitForStarted() && m_daemon.waitForReadyRead()) {
            m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
        }
    }

    ~PrivateBus()
    {
        m_daemon.terminate();
        m_daemon.waitForFinished();
    }

    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    [[nodiscard]] static bool isInstalled()
    {
        return !QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty();
    }

    [[nodiscard]] const QString& address() const { return m_address; }

private:
    QProcess m_daemon;
    QString m_address;
};

/// A service on a bus, answering on a thread of its own, so that a test may wait for it. It records
/// every call as "INTERFACE.MEMBER" with its arguments.
class MockService final : private QDBusVirtualObject
{
public:
    /// Gives the reply's arguments; an empty list answers without any.
    using Answer = std::function<QVariantList(const QVariantList& arguments)>;

    struct Call {
        QString member;
        QVariantList arguments;
    };

    MockService(const QString& address, const QStringList& names, QHash<QString, Answer> answers)
        : m_answers(std::move(answers))
        , m_connectionName(QUuid::createUuid().toString())
        , m_connection(QDBusConnection::connectToBus(address, m_connectionName))
    {
        // Registering gives the object children, so it moves to its thread only then.
        m_connection.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
        m_thread.start();
        moveToThread(&m_thread);
        for (const QString& name : names) {
            m_connection.registerService(name);
        }
    }

    ~MockService() override
    {
        m_connection.unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
        m_thread.quit();
        m_thread.wait();
        QDBusConnection::disconnectFromBus(m_connectionName);
    }

    MockService(const MockService&) = delete;
    MockService& operator=(const MockService&) = delete;

    [[nodiscard]] QList<Call> calls() const
    {
        const std::lock_guard guard(m_mutex);
        return m_calls;
    }

    [[nodiscard]] QStringList members() const
    {
        QStringList members;
        for (const Call& call : calls()) {
            members.append(call.member);
        }
        return members;
    }

private:
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const QString member = message.interface() + u'.' + message.member();
        {
            const std::lock_guard guard(m_mutex);
            m_calls.append({member, message.arguments()});
        }
        const Answer answer = m_answers.value(member);
        if (!answer) {
            return false;
        }
        return connection.send(message.createReply(answer(message.arguments())));
    }

    mutable std::mutex m_mutex;
    QList<Call> m_calls;
    const QHash<QString, Answer> m_answers;
    QString m_connectionName;
    QDBusConnection m_connection;
    QThread m_thread;
};
