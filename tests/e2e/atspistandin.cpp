// A stand-in application on the accessibility bus, shaped like a GTK 3 one,
// that can behave as a broken or hostile application would: it answers
// GetApplicationBusAddress with whatever it is told to, and serves menu trees
// whose objects hold themselves or hold very many children.
//
//   kestrio-atspi-standin --name NAME [--bus-address ANSWER | --own-bus]
//                         [--tree plain|self-loop|wide|deep] [--log FILE]
//
// Each press is appended to the log as "pressed TITLE via bus" (the shared
// accessibility bus) or "via peer" (its own bus, as GTK offers one).
#include "support/atspicacheitems.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusServer>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QFile>
#include <QHash>
#include <QTemporaryDir>

#include <cstdio>

namespace {

const QString kRoot = QStringLiteral("/org/a11y/atspi/accessible/root");

// AT-SPI's numbers for the roles and states this application uses.
constexpr uint kApplication = 75, kFrame = 23, kMenuBar = 34, kMenu = 33, kMenuItem = 35;
constexpr uint kShown = (1u << 8) | (1u << 24) | (1u << 25) | (1u << 30); // enabled, sensitive, showing, visible

struct Node {
    QString name;
    uint role = kMenuItem;
    QStringList children; // object paths
    QString keyBinding;
};

class StandIn : public QDBusVirtualObject {
public:
    StandIn(QString name, QString tree, QString logFile) : logFile_(std::move(logFile))
    {
        add(kRoot, {name, kApplication, {QStringLiteral("/o/1")}, {}});
        add(QStringLiteral("/o/1"), {name + QStringLiteral(" window"), kFrame, {QStringLiteral("/o/2")}, {}});
        add(QStringLiteral("/o/2"), {{}, kMenuBar, {QStringLiteral("/o/3"), QStringLiteral("/o/6")}, {}});
        add(QStringLiteral("/o/3"), {QStringLiteral("File"), kMenu, {QStringLiteral("/o/4"), QStringLiteral("/o/5")}, {}});
        add(QStringLiteral("/o/4"), {QStringLiteral("Open"), kMenuItem, {}, QStringLiteral("o;<Alt>f:o;<Primary>o")});
        add(QStringLiteral("/o/5"), {QStringLiteral("Save"), kMenuItem, {}, {}});
        add(QStringLiteral("/o/6"), {QStringLiteral("Help"), kMenu, {QStringLiteral("/o/7")}, {}});
        add(QStringLiteral("/o/7"), {QStringLiteral("About"), kMenuItem, {}, {}});
        if (tree == QLatin1String("self-loop")) {
            // Every menu and item holds itself three times besides its real children.
            for (const QString& path : {QStringLiteral("/o/3"), QStringLiteral("/o/4"), QStringLiteral("/o/6")})
                nodes_[path].children = QStringList{path, path, path} + nodes_[path].children;
        } else if (tree == QLatin1String("wide")) {
            // A menu of a hundred thousand items, each an object of its own.
            nodes_[QStringLiteral("/o/2")].children.append(QStringLiteral("/o/8"));
            add(QStringLiteral("/o/8"), {QStringLiteral("Many"), kMenu, {}, {}});
            for (int i = 0; i < 100000; ++i)
                nodes_[QStringLiteral("/o/8")].children.append(QStringLiteral("/w/%1").arg(i));
        } else if (tree == QLatin1String("deep")) {
            // Submenus nested a thousand deep.
            nodes_[QStringLiteral("/o/2")].children.append(QStringLiteral("/d/0"));
            for (int i = 0; i < 1000; ++i)
                add(QStringLiteral("/d/%1").arg(i), {QStringLiteral("Deeper"), kMenu, {QStringLiteral("/d/%1").arg(i + 1)}, {}});
            add(QStringLiteral("/d/1000"), {QStringLiteral("Bottom"), kMenuItem, {}, {}});
        }
    }

    void setBusAddress(const QString& address) { busAddress_ = address; }
    void setSharedBus(const QString& connectionName) { sharedBus_ = connectionName; }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const QString interface = message.interface();
        const QString member = message.member();
        const QList<QVariant> arguments = message.arguments();
        const Node node = find(message.path());
        auto reply = [&](const QVariantList& values) {
            QDBusConnection(connection).send(message.createReply(values));
            return true;
        };
        if (interface == QLatin1String("org.freedesktop.DBus.Properties") && member == QLatin1String("Get")) {
            const QString property = arguments.value(1).toString();
            if (property == QLatin1String("Name"))
                return reply({QVariant::fromValue(QDBusVariant(node.name))});
            if (property == QLatin1String("ToolkitName"))
                return reply({QVariant::fromValue(QDBusVariant(QStringLiteral("GTK")))});
            if (property == QLatin1String("ChildCount"))
                return reply({QVariant::fromValue(QDBusVariant(int(node.children.size())))});
        } else if (interface == QLatin1String("org.a11y.atspi.Accessible")) {
            if (member == QLatin1String("GetChildren")) {
                QList<CacheRef> refs;
                refs.reserve(node.children.size());
                for (const QString& child : node.children)
                    refs.append({uniqueName_, QDBusObjectPath(child)});
                return reply({QVariant::fromValue(refs)});
            }
            if (member == QLatin1String("GetRole"))
                return reply({node.role});
            if (member == QLatin1String("GetState"))
                return reply({QVariant::fromValue(QList<uint>{kShown, 0})});
        } else if (interface == QLatin1String("org.a11y.atspi.Action")) {
            if (member == QLatin1String("GetKeyBinding"))
                return reply({node.keyBinding});
            if (member == QLatin1String("DoAction")) {
                const bool shared = connection.name() == sharedBus_;
                log(QStringLiteral("pressed %1 via %2").arg(node.name, shared ? QStringLiteral("bus") : QStringLiteral("peer")));
                return reply({true});
            }
        } else if (interface == QLatin1String("org.a11y.atspi.Application")
                   && member == QLatin1String("GetApplicationBusAddress")) {
            return reply({busAddress_});
        }
        // No bulk cache, as in Qt; anything else is not served either.
        QDBusConnection(connection).send(message.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"),
                                                                  QStringLiteral("not served")));
        return true;
    }

    void setUniqueName(const QString& name) { uniqueName_ = name; }

private:
    void add(const QString& path, Node node) { nodes_.insert(path, std::move(node)); }

    Node find(const QString& path) const
    {
        if (const auto it = nodes_.constFind(path); it != nodes_.cend())
            return *it;
        if (path.startsWith(QLatin1String("/w/")))
            return {QStringLiteral("Item %1").arg(path.mid(3)), kMenuItem, {}, {}};
        return {};
    }

    void log(const QString& line)
    {
        QFile file(logFile_);
        if (!logFile_.isEmpty() && file.open(QIODevice::Append))
            file.write(line.toUtf8() + '\n');
    }

    QHash<QString, Node> nodes_;
    QString logFile_;
    QString busAddress_;
    QString sharedBus_;
    QString uniqueName_;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser options;
    const QCommandLineOption name(QStringLiteral("name"), QStringLiteral("Name on the bus."), QStringLiteral("name"));
    const QCommandLineOption busAddress(QStringLiteral("bus-address"), QStringLiteral("Answer to GetApplicationBusAddress."),
                                        QStringLiteral("address"));
    const QCommandLineOption ownBus(QStringLiteral("own-bus"), QStringLiteral("Offer a bus of this process's own."));
    const QCommandLineOption tree(QStringLiteral("tree"), QStringLiteral("plain, self-loop, wide or deep."),
                                  QStringLiteral("tree"), QStringLiteral("plain"));
    const QCommandLineOption logFile(QStringLiteral("log"), QStringLiteral("Where presses are noted."), QStringLiteral("file"));
    options.addOptions({name, busAddress, ownBus, tree, logFile});
    options.process(app);
    registerCacheItemTypes();

    QDBusMessage ask = QDBusMessage::createMethodCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                                      QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
    const QDBusMessage answer = QDBusConnection::sessionBus().call(ask);
    QDBusConnection bus = QDBusConnection::connectToBus(answer.arguments().value(0).toString(), QStringLiteral("a11y"));
    if (!bus.isConnected()) {
        std::fputs("kestrio-atspi-standin: no accessibility bus\n", stderr);
        return 1;
    }

    StandIn standIn(options.value(name), options.value(tree), options.value(logFile));
    standIn.setUniqueName(bus.baseService());
    standIn.setSharedBus(bus.name());
    standIn.setBusAddress(options.value(busAddress));
    bus.registerVirtualObject(QStringLiteral("/"), &standIn, QDBusConnection::SubPath);

    QTemporaryDir folder;
    std::unique_ptr<QDBusServer> server;
    if (options.isSet(ownBus)) {
        server = std::make_unique<QDBusServer>(QStringLiteral("unix:path=") + folder.filePath(QStringLiteral("bus")));
        server->setAnonymousAuthenticationAllowed(false);
        QObject::connect(server.get(), &QDBusServer::newConnection, [&standIn](const QDBusConnection& peer) {
            QDBusConnection(peer).registerVirtualObject(QStringLiteral("/"), &standIn, QDBusConnection::SubPath);
        });
        standIn.setBusAddress(server->address());
    }

    // Announce the application to the registry, as toolkits' bridges do.
    QDBusMessage embed = QDBusMessage::createMethodCall(QStringLiteral("org.a11y.atspi.Registry"), kRoot,
                                                        QStringLiteral("org.a11y.atspi.Socket"), QStringLiteral("Embed"));
    embed.setArguments({QVariant::fromValue(CacheRef{bus.baseService(), QDBusObjectPath(kRoot)})});
    bus.asyncCall(embed);
    return app.exec();
}
