#include "platform/linux/dbus/dbuscalls.h"

#include <QDBusError>
#include <QDBusVariant>

namespace DBusCalls {

QDBusPendingCall askProcessId(const QDBusConnection& connection, const QString& name)
{
    QDBusMessage ask = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                      QStringLiteral("/org/freedesktop/DBus"),
                                                      QStringLiteral("org.freedesktop.DBus"),
                                                      QStringLiteral("GetConnectionUnixProcessID"));
    ask.setArguments({name});
    return connection.asyncCall(ask, kTimeoutMs);
}

std::optional<QVariant> valueOf(const QDBusMessage& reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    QVariant value = reply.arguments().first();
    if (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

bool timedOut(const QDBusMessage& reply)
{
    if (reply.type() != QDBusMessage::ErrorMessage)
        return false;
    const QDBusError::ErrorType type = QDBusError(reply).type();
    return type == QDBusError::NoReply || type == QDBusError::Timeout || type == QDBusError::TimedOut;
}

} // namespace DBusCalls
