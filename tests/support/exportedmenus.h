#pragma once

// Menus as applications export them on the session bus: GTK's menu-model
// groups (org.gtk.Menus.Start) and dbusmenu layouts (GetLayout), to build
// replies in tests the way toolkits send them.

#include "platform/linux/exported/exportedmenunode.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QVariantMap>

#include <algorithm>

// A link to another menu: ":section" or ":submenu".
struct GtkMenuLink {
    uint group = 0, menu = 0;
};

struct GtkMenuGroup {
    uint group = 0, menu = 0;
    QList<QVariantMap> items;
};

struct DbusmenuItem {
    int id = 0;
    QVariantMap properties;
    QList<DbusmenuItem> children;
};

inline QDBusArgument& operator<<(QDBusArgument& a, const GtkMenuLink& l)
{
    a.beginStructure();
    a << l.group << l.menu;
    a.endStructure();
    return a;
}
inline const QDBusArgument& operator>>(const QDBusArgument& a, GtkMenuLink&) { return a; }

inline QDBusArgument& operator<<(QDBusArgument& a, const GtkMenuGroup& g)
{
    a.beginStructure();
    a << g.group << g.menu;
    a.beginArray(qMetaTypeId<QVariantMap>());
    for (const QVariantMap& item : g.items)
        a << item;
    a.endArray();
    a.endStructure();
    return a;
}
inline const QDBusArgument& operator>>(const QDBusArgument& a, GtkMenuGroup&) { return a; }

Q_DECLARE_METATYPE(DbusmenuItem)

inline QDBusArgument& operator<<(QDBusArgument& a, const DbusmenuItem& item)
{
    a.beginStructure();
    a << item.id << item.properties;
    a.beginArray(qMetaTypeId<QDBusVariant>());
    for (const DbusmenuItem& child : item.children)
        a << QDBusVariant(QVariant::fromValue(child));
    a.endArray();
    a.endStructure();
    return a;
}
inline const QDBusArgument& operator>>(const QDBusArgument& a, DbusmenuItem&) { return a; }

Q_DECLARE_METATYPE(GtkMenuLink)
Q_DECLARE_METATYPE(GtkMenuGroup)

inline void registerExportedMenuTypes()
{
    qDBusRegisterMetaType<GtkMenuLink>();
    qDBusRegisterMetaType<GtkMenuGroup>();
    qDBusRegisterMetaType<QList<GtkMenuGroup>>();
    qDBusRegisterMetaType<DbusmenuItem>();
    qDBusRegisterMetaType<QList<QStringList>>();
}

// How many nodes a menu tree read from such a reply holds; `deepest` gets the
// depth of its deepest node.
inline int countNodes(const QList<ExportedMenuNode>& nodes, int depth, int& deepest)
{
    deepest = std::max(deepest, depth);
    int count = 0;
    for (const ExportedMenuNode& node : nodes)
        count += 1 + countNodes(node.children, depth + 1, deepest);
    return count;
}
