#include "platform/socketpeer.h"

#include <sys/socket.h>
#include <unistd.h>

std::optional<SocketPeer> SocketPeer::of(qintptr socketDescriptor)
{
    if (socketDescriptor < 0)
        return std::nullopt;
    ucred credentials{};
    socklen_t length = sizeof credentials;
    if (::getsockopt(int(socketDescriptor), SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0
        || length != sizeof credentials)
        return std::nullopt;
    return SocketPeer{qint32(credentials.pid), uint(credentials.uid)};
}

uint SocketPeer::currentUser()
{
    return uint(::getuid());
}
