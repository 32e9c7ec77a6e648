#pragma once

#include <QByteArray>

#include <optional>

// sway's IPC messages (the i3 protocol): "i3-ipc", a 32-bit payload length
// and a 32-bit type in native byte order, then a JSON payload. Events carry
// the type's high bit.
namespace SwayIpc {

enum Type : quint32 {
    runCommand = 0,
    subscribe = 2,
    getTree = 4,
    workspaceEvent = 0x80000000u,
    windowEvent = 0x80000003u,
};

// Longer answers come from a broken or hostile peer: the connection is dropped.
inline constexpr quint32 kMaxPayload = 64u << 20;

struct Message {
    quint32 type = 0;
    QByteArray payload;
};

QByteArray encode(quint32 type, const QByteArray& payload);

// Cuts a byte stream into messages.
class Decoder {
public:
    void append(const QByteArray& bytes);
    // The next whole message, or nothing until more bytes arrive.
    std::optional<Message> next();
    // The stream is not sway's: nothing more is decoded.
    bool failed() const { return failed_; }

private:
    QByteArray buffer_;
    bool failed_ = false;
};

} // namespace SwayIpc
