#include "platform/linux/exported/gtkmenumodel.h"

#include <QDBusVariant>

namespace {

// Bounds no real menu reaches: a hostile model must not make the reading endless.
constexpr int kMaxItems = 20000;
constexpr int kMaxDepth = 16;
constexpr int kMaxGroups = 256;

std::optional<std::pair<uint, uint>> link(const QVariant& value)
{
    if (!value.canConvert<QDBusArgument>())
        return std::nullopt;
    const QDBusArgument argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("(uu)"))
        return std::nullopt;
    uint group = 0, menu = 0;
    argument.beginStructure();
    argument >> group >> menu;
    argument.endStructure();
    return std::pair{group, menu};
}

QString text(const QVariantMap& attributes, const QString& key)
{
    const QVariant value = attributes.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

} // namespace

bool GtkMenuModel::take(const QDBusArgument& reply)
{
    if (reply.currentSignature() != QLatin1String("a(uuaa{sv})"))
        return false;
    reply.beginArray();
    while (!reply.atEnd()) {
        uint group = 0, menu = 0;
        QList<Item> items;
        reply.beginStructure();
        reply >> group >> menu;
        reply.beginArray();
        while (!reply.atEnd()) {
            QVariantMap attributes;
            reply >> attributes;
            Item item;
            item.label = text(attributes, QStringLiteral("label"));
            item.action = text(attributes, QStringLiteral("action"));
            item.accel = text(attributes, QStringLiteral("accel"));
            item.hiddenWhen = text(attributes, QStringLiteral("hidden-when"));
            if (attributes.contains(QStringLiteral("target")))
                item.target = attributes.value(QStringLiteral("target"));
            item.section = link(attributes.value(QStringLiteral(":section")));
            item.submenu = link(attributes.value(QStringLiteral(":submenu")));
            if (itemCount_ + items.size() < kMaxItems)
                items.append(item);
        }
        reply.endArray();
        reply.endStructure();
        take(group, menu, items);
    }
    reply.endArray();
    return true;
}

void GtkMenuModel::take(uint group, uint menu, const QList<Item>& items)
{
    if (groups_.size() >= kMaxGroups && !groups_.contains(group))
        return;
    groups_.insert(group);
    itemCount_ += items.size();
    menus_.insert({group, menu}, items);
}

QList<uint> GtkMenuModel::missingGroups() const
{
    QList<uint> missing;
    for (const QList<Item>& items : menus_) {
        for (const Item& item : items) {
            for (const auto& target : {item.section, item.submenu}) {
                if (target && !groups_.contains(target->first) && !missing.contains(target->first))
                    missing.append(target->first);
            }
        }
    }
    std::sort(missing.begin(), missing.end());
    return missing;
}

std::optional<QHash<QString, GtkMenuModel::ActionState>> GtkMenuModel::readDescribeAll(const QDBusArgument& reply)
{
    if (reply.currentSignature() != QLatin1String("a{s(bgav)}"))
        return std::nullopt;
    QHash<QString, ActionState> actions;
    reply.beginMap();
    while (!reply.atEnd()) {
        QString name;
        ActionState state;
        QString parameter; // a signature, read as text: an empty one is not a QDBusSignature
        reply.beginMapEntry();
        reply >> name;
        reply.beginStructure();
        reply >> state.enabled >> parameter;
        reply.beginArray();
        while (!reply.atEnd()) {
            QDBusVariant ignored;
            reply >> ignored;
        }
        reply.endArray();
        reply.endStructure();
        reply.endMapEntry();
        if (actions.size() < kMaxItems)
            actions.insert(name, state);
    }
    reply.endMap();
    return actions;
}

QList<ExportedMenuNode> GtkMenuModel::tree(const QHash<QString, ActionState>& actions,
                                           const QHash<QString, std::pair<QString, QString>>& addresses) const
{
    QSet<std::pair<uint, uint>> visited;
    int budget = kMaxItems;
    return menu({0, 0}, 0, visited, actions, addresses, budget);
}

QList<ExportedMenuNode> GtkMenuModel::menu(std::pair<uint, uint> which, int depth, QSet<std::pair<uint, uint>>& visited,
                                           const QHash<QString, ActionState>& actions,
                                           const QHash<QString, std::pair<QString, QString>>& addresses,
                                           int& budget) const
{
    QList<ExportedMenuNode> out;
    // Each menu is taken once per reading, where it is first linked: a menu
    // that holds itself, or one linked from many places, costs no more than
    // its own items.
    if (depth > kMaxDepth || visited.contains(which) || !menus_.contains(which))
        return out;
    visited.insert(which);
    for (const Item& item : menus_.value(which)) {
        // Every entry looked at is charged, shown or not.
        if (--budget < 0)
            break;
        if (item.section) { // a section is part of the menu it sits in
            out += menu(*item.section, depth + 1, visited, actions, addresses, budget);
            continue;
        }
        ExportedMenuNode node;
        node.label = withoutMnemonic(item.label);
        if (node.label.isEmpty())
            continue;
        if (item.submenu) {
            node.isSubmenu = true;
            node.children = menu(*item.submenu, depth + 1, visited, actions, addresses, budget);
            out.append(node);
            continue;
        }
        // "app.quit": the action "quit" of the group exported as "app".
        const qsizetype dot = item.action.indexOf(u'.');
        if (dot <= 0)
            continue;
        const QString prefix = item.action.left(dot);
        if (!addresses.contains(prefix))
            continue; // a group Kestrio cannot reach cannot be pressed
        const auto state = actions.constFind(item.action);
        if (state == actions.constEnd() && item.hiddenWhen == QLatin1String("action-missing"))
            continue;
        node.enabled = state != actions.constEnd() && state->enabled;
        if (!node.enabled && item.hiddenWhen == QLatin1String("action-disabled"))
            continue;
        node.key = translateGtkAccelerator(item.accel);
        const auto [service, path] = addresses.value(prefix);
        node.press = ExportedPress{ExportedPress::Kind::gtkAction, service, path, item.action.mid(dot + 1), item.target, 0};
        out.append(node);
    }
    return out;
}
