#include "BusConnection.h"

#include <QFileInfo>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace
{

/// The address of the socket where it exists.
QString addressOfSocket(const QString& path)
{
    return QFileInfo::exists(path) ? u"unix:path="_s + path : QString();
}

QString connectionName()
{
    return u"corvane-"_s + QUuid::createUuid().toString(QUuid::Id128);
}

} // namespace

BusAddresses BusAddresses::standard()
{
    BusAddresses addresses{qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS"),
                           qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS")};
    if (addresses.system.isEmpty()) {
        addresses.system = addressOfSocket(u"/run/dbus/system_bus_socket"_s);
    }
    const QString runtimeFolder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (addresses.session.isEmpty() && !runtimeFolder.isEmpty()) {
        addresses.session = addressOfSocket(runtimeFolder + "/bus"_L1);
    }
    return addresses;
}

BusConnection::BusConnection(const QString& address)
    : m_name(connectionName())
    , m_connection(address.isEmpty() ? QDBusConnection(m_name)
                                     : QDBusConnection::connectToBus(address, m_name))
{
}

BusConnection::~BusConnection()
{
    QDBusConnection::disconnectFromBus(m_name);
}
