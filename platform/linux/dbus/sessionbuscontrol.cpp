#include "platform/linux/dbus/sessionbuscontrol.h"

#include "platform/instancerequest.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>

void SessionBusControl::publish(RemoteControl::Toggle toggle)
{
    toggle_ = std::move(toggle);
    if (published_)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    published_ = bus.registerObject(QString::fromLatin1(kPath), this, QDBusConnection::ExportScriptableSlots);
    // Claiming the name is asked for without waiting on the bus; the local
    // socket already keeps a second instance out.
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("RequestName"));
    request << QString::fromLatin1(kService) << uint(4); // DBUS_NAME_FLAG_DO_NOT_QUEUE
    bus.asyncCall(request);
}

void SessionBusControl::Toggle(const QString& activationToken)
{
    if (!toggle_)
        return;
    // The same rules as a token that came through the local socket.
    const auto request = InstanceRequest::decode("toggle " + activationToken.toUtf8());
    toggle_(request ? request->activationToken : QString());
}
