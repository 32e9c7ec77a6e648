#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// What a second launch asks of the running instance, one line per request
// over the instance's local socket.
struct InstanceRequest {
    enum class Kind { reopen, toggle };

    Kind kind = Kind::reopen;
    // The desktop's permission for the panel to take the focus (Wayland's
    // XDG_ACTIVATION_TOKEN), handed on from the launch that asked.
    QString activationToken;

    // Tokens are short printable texts; anything longer is not one.
    static constexpr int kMaxTokenLength = 512;

    QByteArray encode() const;
    // Nothing for a line that is no request; a malformed token is dropped.
    static std::optional<InstanceRequest> decode(const QByteArray& line);
};
