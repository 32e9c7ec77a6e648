#include "platform/linux/atspi/atspibus.h"

#include "platform/linux/dbus/localbusaddress.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QHash>

size_t qHash(const AtspiRef& ref, size_t seed)
{
    return qHashMulti(seed, ref.bus, ref.path);
}

AtspiState::Reading AtspiState::read(quint64 states)
{
    if (states == 0 || has(states, defunct))
        return {true, false, false};
    return {false, has(states, sensitive), has(states, showing)};
}

AtspiBus::AtspiBus(std::function<QString()> fallbackAddress) : fallbackAddress_(std::move(fallbackAddress)) {}

AtspiBus::~AtspiBus()
{
    invalidate();
}

bool AtspiBus::ensureConnected()
{
    std::lock_guard attempt(connecting_);
    if (isConnected())
        return true;

    // The launcher's answer, else the environment, else what the display
    // announces (any X client may set that): each only where it names a local socket.
    std::optional<LocalBusAddress> address;
    QDBusMessage ask = QDBusMessage::createMethodCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                                      QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
    const QDBusMessage reply = QDBusConnection::sessionBus().call(ask, QDBus::Block, kCallTimeoutMs);
    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
        address = LocalBusAddress::parse(reply.arguments().first().toString());
    if (!address)
        address = LocalBusAddress::parse(qEnvironmentVariable("AT_SPI_BUS_ADDRESS"));
    if (!address && fallbackAddress_)
        address = LocalBusAddress::parse(fallbackAddress_());
    if (!address)
        return false;

    int generation = 0;
    {
        std::lock_guard lock(mutex_);
        generation = generation_ + 1;
    }
    const QString name = QStringLiteral("kestrio-a11y-%1").arg(generation);
    QDBusConnection bus = QDBusConnection::connectToBus(address->text(), name);
    if (!bus.isConnected()) {
        QDBusConnection::disconnectFromBus(name);
        return false;
    }

    // GTK's bridge keeps its bulk cache (one call for every object of an
    // application) only while some client listens to its events; the answer
    // is not needed.
    QDBusMessage listen = QDBusMessage::createMethodCall(QStringLiteral("org.a11y.atspi.Registry"),
                                                         QStringLiteral("/org/a11y/atspi/registry"),
                                                         QStringLiteral("org.a11y.atspi.Registry"),
                                                         QStringLiteral("RegisterEvent"));
    listen.setArguments({QStringLiteral("object:children-changed"), QStringList(), QString()});
    bus.asyncCall(listen, kCallTimeoutMs);

    std::lock_guard lock(mutex_);
    connection_ = bus;
    generation_ = generation;
    return true;
}

QDBusConnection AtspiBus::connection() const
{
    std::lock_guard lock(mutex_);
    return connection_ ? *connection_ : QDBusConnection(QStringLiteral("kestrio-a11y-none"));
}

bool AtspiBus::isConnected() const
{
    std::lock_guard lock(mutex_);
    return connection_ && connection_->isConnected();
}

int AtspiBus::generation() const
{
    std::lock_guard lock(mutex_);
    return generation_;
}

void AtspiBus::invalidate()
{
    std::lock_guard lock(mutex_);
    if (connection_) {
        QDBusConnection::disconnectFromBus(connection_->name());
        connection_.reset();
    }
}

QDBusPendingCall AtspiBus::call(const AtspiRef& target, const QString& interface, const QString& method,
                                const QVariantList& arguments, int timeoutMs) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(target.bus, target.path, interface, method);
    message.setArguments(arguments);
    return connection().asyncCall(message, timeoutMs);
}

QDBusPendingCall AtspiBus::property(const AtspiRef& target, const QString& interface, const QString& name) const
{
    return call(target, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"), {interface, name});
}

QDBusMessage AtspiBus::callAndWait(const AtspiRef& target, const QString& interface, const QString& method,
                                   const QVariantList& arguments, int timeoutMs) const
{
    QDBusPendingCall pending = call(target, interface, method, arguments, timeoutMs);
    pending.waitForFinished();
    return pending.reply();
}

AtspiRef AtspiBus::desktop()
{
    return {QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("/org/a11y/atspi/accessible/root")};
}

QList<AtspiRef> AtspiBus::applications() const
{
    return refsOf(callAndWait(desktop(), QStringLiteral("org.a11y.atspi.Accessible"), QStringLiteral("GetChildren")));
}

QList<AtspiRef> AtspiBus::refsOf(const QDBusMessage& reply, qsizetype limit)
{
    QList<AtspiRef> refs;
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return refs;
    const QVariant first = reply.arguments().first();
    if (!first.canConvert<QDBusArgument>())
        return refs;
    const QDBusArgument argument = first.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(so)"))
        return refs;
    argument.beginArray();
    while (!argument.atEnd()) {
        QString bus;
        QDBusObjectPath path;
        argument.beginStructure();
        argument >> bus >> path;
        argument.endStructure();
        if (refs.size() < limit)
            refs.append({bus, path.path()});
    }
    argument.endArray();
    return refs;
}

std::optional<quint64> AtspiBus::statesOf(const QDBusMessage& reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    const QVariant first = reply.arguments().first();
    QList<uint> words;
    if (first.canConvert<QDBusArgument>()) {
        const QDBusArgument argument = first.value<QDBusArgument>();
        if (argument.currentSignature() != QLatin1String("au"))
            return std::nullopt;
        words = qdbus_cast<QList<uint>>(argument);
    } else {
        words = first.value<QList<uint>>();
    }
    quint64 states = 0;
    if (!words.isEmpty())
        states |= words[0];
    if (words.size() > 1)
        states |= quint64(words[1]) << 32;
    return states;
}

