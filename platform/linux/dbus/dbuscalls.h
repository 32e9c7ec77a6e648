#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QVariant>

#include <optional>

// What every question Kestrio asks another program over D-Bus shares.
namespace DBusCalls {

// Every call has a short time-out, so that a program that does not answer costs little.
inline constexpr int kTimeoutMs = 1000;

// Asks the bus daemon of `connection`, which never hangs, for the process
// behind the connection `name`.
QDBusPendingCall askProcessId(const QDBusConnection& connection, const QString& name);
// The first value of a reply, unwrapped from a variant; nothing for an error.
std::optional<QVariant> valueOf(const QDBusMessage& reply);
// Whether the other end did not answer in time.
bool timedOut(const QDBusMessage& reply);

} // namespace DBusCalls
