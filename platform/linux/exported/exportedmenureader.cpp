#include "platform/linux/exported/exportedmenureader.h"

#include "platform/linux/dbus/dbuscalls.h"
#include "platform/linux/exported/dbusmenulayout.h"
#include "platform/linux/exported/gtkmenumodel.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QRegularExpression>

namespace {

const QString kMenus = QStringLiteral("org.gtk.Menus");
const QString kActions = QStringLiteral("org.gtk.Actions");
const QString kDbusmenu = QStringLiteral("com.canonical.dbusmenu");
const QString kRegistrar = QStringLiteral("com.canonical.AppMenu.Registrar");
const QString kRegistrarPath = QStringLiteral("/com/canonical/AppMenu/Registrar");
const QString kIntrospectable = QStringLiteral("org.freedesktop.DBus.Introspectable");
// Submenus in groups of their own are asked for in rounds; no real model needs many.
constexpr int kMaxRounds = 8;
constexpr int kMaxNames = 2000;

std::optional<QDBusArgument> argumentOf(const QDBusMessage& reply, int index)
{
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() <= index
        || !reply.arguments().at(index).canConvert<QDBusArgument>())
        return std::nullopt;
    return reply.arguments().at(index).value<QDBusArgument>();
}

QList<MenuNode> makeItems(const QList<ExportedMenuNode>& nodes)
{
    QList<MenuNode> out;
    for (const ExportedMenuNode& node : nodes) {
        // A label may carry its shortcut after a tab where the model gives none.
        const NameAndShortcut named = splitDrawnShortcut(node.label);
        MenuNode item;
        item.title = named.name;
        item.enabled = node.enabled;
        if (node.isSubmenu) {
            item.kind = MenuNode::Kind::menu;
            item.children = makeItems(node.children);
        } else {
            item.shortcut = node.key ? node.key : named.key;
            if (node.press)
                item.handle = std::make_shared<ExportedMenuHandle>(*node.press, node.enabled);
        }
        out.append(item);
    }
    return out;
}

} // namespace

ExportedMenuReader::ExportedMenuReader(QDBusConnection session) : session_(std::move(session)) {}

QDBusMessage ExportedMenuReader::call(const QString& service, const QString& path, const QString& interface,
                                      const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    // Reading must not start anything: an activatable registrar that starts
    // would move every Qt application's menu bar into a global menu.
    message.setAutoStartService(false);
    return session_.call(message, QDBus::Block, DBusCalls::kTimeoutMs);
}

std::optional<MenuTree> ExportedMenuReader::read(qint32 pid, const std::optional<DesktopWindow>& window)
{
    if (!session_.isConnected())
        return std::nullopt;
    bool complete = true;
    const std::optional<quint64> x11Window = window ? window->x11Window : std::nullopt;
    // X11 tells of every window GTK exports a menu bar for; elsewhere the
    // application's names are searched.
    std::optional<QList<ExportedMenuNode>> entries =
        readGtk(pid, window ? window->gtkExports : GtkExports{}, !x11Window, complete);
    if ((!entries || entries->isEmpty()) && x11Window)
        entries = readDbusmenu(*x11Window, complete);
    if (!entries || entries->isEmpty())
        return std::nullopt;
    return makeMenuBar(*entries, complete);
}

std::optional<MenuTree> ExportedMenuReader::makeMenuBar(const QList<ExportedMenuNode>& entries, bool complete)
{
    MenuTree tree;
    tree.complete = complete;
    for (const ExportedMenuNode& node : entries) {
        if (!node.isSubmenu)
            continue;
        MenuNode menu;
        menu.kind = MenuNode::Kind::menu;
        menu.title = node.label;
        menu.enabled = node.enabled;
        menu.children = makeItems(node.children);
        tree.menus.append(menu);
    }
    if (tree.menus.isEmpty())
        return std::nullopt;
    return tree;
}

QString ExportedMenuReader::gtkApplicationPath(const QString& applicationId)
{
    static const QRegularExpression valid(QStringLiteral("^[A-Za-z_-][A-Za-z0-9_-]*(\\.[A-Za-z_-][A-Za-z0-9_-]*)+$"));
    if (applicationId.size() > 255 || !valid.match(applicationId).hasMatch())
        return {};
    QString path = u'/' + applicationId;
    path.replace(u'.', u'/').replace(u'-', u'_');
    return path;
}

QStringList ExportedMenuReader::childNodes(const QString& introspection)
{
    static const QRegularExpression node(QStringLiteral("<node\\s+name=\"([A-Za-z0-9_]+)\""));
    QStringList names;
    for (auto it = node.globalMatch(introspection); it.hasNext() && names.size() < 256;)
        names.append(it.next().captured(1));
    return names;
}

QStringList ExportedMenuReader::namesOfProcess(qint32 pid)
{
    const QDBusMessage list = call(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                   QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ListNames"));
    if (list.type() != QDBusMessage::ReplyMessage || list.arguments().isEmpty())
        return {};
    QList<std::pair<QString, QDBusPendingCall>> pending;
    for (const QString& name : list.arguments().first().toStringList()) {
        if (name.startsWith(u':') || name.startsWith(QLatin1String("org.freedesktop.")) || pending.size() >= kMaxNames)
            continue;
        pending.append({name, DBusCalls::askProcessId(session_, name)});
    }
    QStringList names;
    for (auto& [name, reply] : pending) {
        reply.waitForFinished();
        const QDBusMessage answer = reply.reply();
        if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty()
            && answer.arguments().first().toUInt() == uint(pid))
            names.append(name);
    }
    return names;
}

std::optional<QList<ExportedMenuNode>> ExportedMenuReader::readGtk(qint32 pid, GtkExports gtk, bool searchNames,
                                                                   bool& complete)
{
    // Without the display's word, the menu bar is found from the
    // application's names: GTK exports it below the path of its application id.
    if (gtk.menuBarPath.isEmpty() && searchNames) {
        for (const QString& name : namesOfProcess(pid)) {
            const QString path = gtkApplicationPath(name);
            if (path.isEmpty())
                continue;
            const QDBusMessage menus = call(name, path + QStringLiteral("/menus"), kIntrospectable, QStringLiteral("Introspect"));
            if (menus.type() != QDBusMessage::ReplyMessage || menus.arguments().isEmpty()
                || !childNodes(menus.arguments().first().toString()).contains(QStringLiteral("menubar")))
                continue;
            gtk.busName = name;
            gtk.applicationPath = path;
            gtk.menuBarPath = path + QStringLiteral("/menus/menubar");
            // The window's own actions: only where there is no doubt which window.
            const QDBusMessage windows = call(name, path + QStringLiteral("/window"), kIntrospectable,
                                              QStringLiteral("Introspect"));
            const QStringList ids = windows.arguments().isEmpty() ? QStringList()
                                                                   : childNodes(windows.arguments().first().toString());
            if (ids.size() == 1)
                gtk.windowPath = path + QStringLiteral("/window/") + ids.first();
            break;
        }
    }
    if (gtk.menuBarPath.isEmpty() || gtk.busName.isEmpty())
        return std::nullopt;

    GtkMenuModel model;
    QList<uint> groups{0};
    QList<uint> subscribed;
    for (int round = 0; round < kMaxRounds && !groups.isEmpty(); ++round) {
        QVariantList arguments{QVariant::fromValue(groups)};
        const QDBusMessage reply = call(gtk.busName, gtk.menuBarPath, kMenus, QStringLiteral("Start"), arguments);
        if (DBusCalls::timedOut(reply))
            complete = false;
        const auto argument = argumentOf(reply, 0);
        if (!argument || !model.take(*argument))
            break;
        subscribed += groups;
        groups = model.missingGroups();
        for (uint group : std::as_const(subscribed))
            groups.removeAll(group);
    }
    if (!subscribed.isEmpty()) {
        // Done with the groups: the application need not tell about changes.
        QDBusMessage end = QDBusMessage::createMethodCall(gtk.busName, gtk.menuBarPath, kMenus,
                                                          QStringLiteral("End"));
        end.setArguments({QVariant::fromValue(subscribed)});
        end.setAutoStartService(false);
        session_.send(end);
    }

    QHash<QString, GtkMenuModel::ActionState> actions;
    QHash<QString, std::pair<QString, QString>> addresses;
    const QList<std::pair<QString, QString>> groupsByPrefix{{QStringLiteral("app"), gtk.applicationPath},
                                                            {QStringLiteral("win"), gtk.windowPath}};
    for (const auto& [prefix, path] : groupsByPrefix) {
        if (path.isEmpty())
            continue;
        const QDBusMessage reply = call(gtk.busName, path, kActions, QStringLiteral("DescribeAll"));
        const auto argument = argumentOf(reply, 0);
        const auto described = argument ? GtkMenuModel::readDescribeAll(*argument) : std::nullopt;
        if (!described) {
            if (DBusCalls::timedOut(reply))
                complete = false;
            continue;
        }
        addresses.insert(prefix, {gtk.busName, path});
        for (auto it = described->begin(); it != described->end(); ++it)
            actions.insert(prefix + u'.' + it.key(), it.value());
    }
    return model.tree(actions, addresses);
}

std::optional<QList<ExportedMenuNode>> ExportedMenuReader::readDbusmenu(quint64 window, bool& complete)
{
    const QDBusMessage where = call(kRegistrar, kRegistrarPath, kRegistrar, QStringLiteral("GetMenuForWindow"),
                                    {QVariant::fromValue(uint(window))});
    if (where.type() != QDBusMessage::ReplyMessage || where.arguments().size() < 2)
        return std::nullopt;
    const QString service = where.arguments().at(0).toString();
    const QString path = where.arguments().at(1).value<QDBusObjectPath>().path();
    if (service.isEmpty() || path.isEmpty() || path == QLatin1String("/"))
        return std::nullopt;
    const QDBusMessage layout = call(service, path, kDbusmenu, QStringLiteral("GetLayout"),
                                     {0, -1, QStringList()});
    if (DBusCalls::timedOut(layout))
        complete = false;
    const auto argument = argumentOf(layout, 1);
    return argument ? DbusmenuLayout::read(*argument, service, path) : std::nullopt;
}

bool ExportedMenuReader::press(const ExportedPress& press, int replyMs)
{
    QDBusMessage message;
    if (press.kind == ExportedPress::Kind::gtkAction) {
        message = QDBusMessage::createMethodCall(press.service, press.path, kActions, QStringLiteral("Activate"));
        QDBusArgument parameter;
        parameter.beginArray(qMetaTypeId<QDBusVariant>());
        if (press.target)
            parameter << QDBusVariant(*press.target);
        parameter.endArray();
        message.setArguments({press.action, QVariant::fromValue(parameter), QVariantMap()});
    } else {
        message = QDBusMessage::createMethodCall(press.service, press.path, kDbusmenu, QStringLiteral("Event"));
        message.setArguments({press.id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)),
                              QVariant::fromValue(uint(0))});
    }
    message.setAutoStartService(false);
    const QDBusMessage reply = session_.call(message, QDBus::Block, replyMs);
    // No answer in time: busy running the command, e.g. a modal dialog.
    return DBusCalls::timedOut(reply) || reply.type() != QDBusMessage::ErrorMessage;
}
