#pragma once

#include "platform/linux/exported/exportedmenunode.h"

#include <QDBusArgument>
#include <QHash>
#include <QSet>

// A menu model a GTK application exports (org.gtk.Menus), assembled from the
// groups it sends, and turned into a tree whose commands name their actions.
// Everything here works on what was received: the application decides all
// of the input, so links that loop or point nowhere are cut.
class GtkMenuModel {
public:
    // One entry of a menu as sent: its attributes and links.
    struct Item {
        QString label;
        QString action;
        std::optional<QVariant> target;
        QString accel;
        QString hiddenWhen;
        std::optional<std::pair<uint, uint>> section;
        std::optional<std::pair<uint, uint>> submenu;
    };

    // Takes a reply to Start; false when it is not one.
    bool take(const QDBusArgument& reply);
    void take(uint group, uint menu, const QList<Item>& items);
    // Groups that menus link to and that were not sent yet, to ask for next.
    QList<uint> missingGroups() const;

    // An action's state as the application's action groups describe it.
    struct ActionState {
        bool enabled = true;
    };
    // `actions` by full name ("app.quit", "win.save"); `addresses` by prefix
    // ("app", "win"): where the group of that prefix is pressed.
    QList<ExportedMenuNode> tree(const QHash<QString, ActionState>& actions,
                                 const QHash<QString, std::pair<QString, QString>>& addresses) const;

    static std::optional<QHash<QString, ActionState>> readDescribeAll(const QDBusArgument& reply);

private:
    QList<ExportedMenuNode> menu(std::pair<uint, uint> which, int depth, QSet<std::pair<uint, uint>>& visited,
                                 const QHash<QString, ActionState>& actions,
                                 const QHash<QString, std::pair<QString, QString>>& addresses, int& budget) const;

    QHash<std::pair<uint, uint>, QList<Item>> menus_;
    QSet<uint> groups_;
    int itemCount_ = 0;
};
