#pragma once

#include "platform/socketpeer.h"

#include <QDBusConnection>
#include <QString>

#include <optional>

// A private connection to a D-Bus server that one process runs for its own
// clients (GTK's accessibility bridge offers one to each client). The address
// comes from that process, so it is used only where it names a local socket,
// and the connection is kept only when the process listening on the socket is
// the one that offered it.
class PeerConnection {
public:
    // Connects to `address` under the connection name `name`; nothing (and no
    // connection left open) when the address is not a local socket or the
    // listener is not the process `pid` of this user. Waits: never on the UI thread.
    static std::optional<QDBusConnection> open(const QString& address, const QString& name, qint32 pid);

    // Who listens at the other end of a connection, as the kernel tells it.
    static std::optional<SocketPeer> listenerOf(const QDBusConnection& connection);
};
