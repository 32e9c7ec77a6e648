#pragma once

#include <QtGlobal>

#include <optional>

// Who is at the other end of a local socket, as the kernel tells it: a
// process of this session answering under a well-known name could be anyone's.
struct SocketPeer {
    qint32 pid = 0;
    uint uid = 0;

    // The peer of a connected local socket, or nothing.
    static std::optional<SocketPeer> of(qintptr socketDescriptor);
    // The user this program runs as.
    static uint currentUser();
};
