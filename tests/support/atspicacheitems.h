#pragma once

// The two layouts of an AT-SPI bulk-cache reply (Cache.GetItems), to build
// replies in tests and fuzzing the way a toolkit sends them.

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>

struct CacheRef {
    QString bus;
    QDBusObjectPath path;
};

struct ItemWithChildren {
    CacheRef self, application, parent;
    QList<CacheRef> children;
    QStringList interfaces;
    QString name;
    uint role = 0;
    QString description;
    QList<uint> states;
};

struct ItemWithCounts {
    CacheRef self, application, parent;
    int index = 0, count = 0;
    QStringList interfaces;
    QString name;
    uint role = 0;
    QString description;
    QList<uint> states;
};

inline QDBusArgument& operator<<(QDBusArgument& a, const CacheRef& r)
{
    a.beginStructure();
    a << r.bus << r.path;
    a.endStructure();
    return a;
}
inline const QDBusArgument& operator>>(const QDBusArgument& a, CacheRef& r)
{
    a.beginStructure();
    a >> r.bus >> r.path;
    a.endStructure();
    return a;
}
inline QDBusArgument& operator<<(QDBusArgument& a, const ItemWithChildren& i)
{
    a.beginStructure();
    a << i.self << i.application << i.parent << i.children << i.interfaces << i.name << i.role << i.description
      << i.states;
    a.endStructure();
    return a;
}
inline const QDBusArgument& operator>>(const QDBusArgument& a, ItemWithChildren&) { return a; }
inline QDBusArgument& operator<<(QDBusArgument& a, const ItemWithCounts& i)
{
    a.beginStructure();
    a << i.self << i.application << i.parent << i.index << i.count << i.interfaces << i.name << i.role
      << i.description << i.states;
    a.endStructure();
    return a;
}
inline const QDBusArgument& operator>>(const QDBusArgument& a, ItemWithCounts&) { return a; }

Q_DECLARE_METATYPE(CacheRef)
Q_DECLARE_METATYPE(ItemWithChildren)
Q_DECLARE_METATYPE(ItemWithCounts)


inline void registerCacheItemTypes()
{
    qDBusRegisterMetaType<CacheRef>();
    qDBusRegisterMetaType<QList<CacheRef>>();
    qDBusRegisterMetaType<ItemWithChildren>();
    qDBusRegisterMetaType<QList<ItemWithChildren>>();
    qDBusRegisterMetaType<ItemWithCounts>();
    qDBusRegisterMetaType<QList<ItemWithCounts>>();
}
