#pragma once

#include "platform/linux/keybinding/keybinding.h"
#include "platform/menutree.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <optional>

// How a command of a menu an application exports on the session bus is
// pressed: through the GTK action it names, or as a click on a dbusmenu item.
struct ExportedPress {
    enum class Kind { gtkAction, dbusmenuClick };

    Kind kind = Kind::gtkAction;
    QString service;
    QString path;
    QString action;                // GTK: the action's name within its group
    std::optional<QVariant> target; // GTK: its parameter, where it takes one
    int id = 0;                    // dbusmenu: the item
};

// An exported command, as the menu tree carries it to be pressed.
class ExportedMenuHandle final : public MenuHandle {
public:
    ExportedMenuHandle(ExportedPress press, bool enabled) : press(std::move(press)), enabled(enabled) {}

    ExportedPress press;
    bool enabled = true; // as read with the menus
};

// One entry of an exported menu, as read: a command, or a submenu holding more.
struct ExportedMenuNode {
    QString label; // mnemonic marks removed
    std::optional<KeyChord> key;
    bool enabled = true;
    bool isSubmenu = false;
    std::optional<ExportedPress> press; // commands only; none when it cannot be pressed from outside
    QList<ExportedMenuNode> children;
};

// A label without its mnemonic marks ("_Save As…" → "Save As…", "__" → "_").
QString withoutMnemonic(const QString& label);
