#include "platform/linux/dbus/peerconnection.h"

#include "platform/linux/dbus/localbusaddress.h"

#include <dbus/dbus.h>

std::optional<QDBusConnection> PeerConnection::open(const QString& address, const QString& name, qint32 pid)
{
    const std::optional<LocalBusAddress> local = LocalBusAddress::parse(address);
    if (!local || pid <= 0)
        return std::nullopt;
    QDBusConnection connection = QDBusConnection::connectToPeer(local->text(), name);
    const std::optional<SocketPeer> listener = connection.isConnected() ? listenerOf(connection) : std::nullopt;
    // No message has been sent yet: a socket of another process learns no
    // more than who connected.
    if (!listener || listener->pid != pid || listener->uid != SocketPeer::currentUser()) {
        QDBusConnection::disconnectFromPeer(name);
        return std::nullopt;
    }
    return connection;
}

std::optional<SocketPeer> PeerConnection::listenerOf(const QDBusConnection& connection)
{
    auto* raw = static_cast<DBusConnection*>(connection.internalPointer());
    int socket = -1;
    if (!raw || !dbus_connection_get_socket(raw, &socket) || socket < 0)
        return std::nullopt;
    return SocketPeer::of(socket);
}
