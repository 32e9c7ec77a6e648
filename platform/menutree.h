#pragma once

#include "platform/keys.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

// How a backend finds a menu item again to press it. Opaque to the logic:
// only ever handed back to the backend that made it.
class MenuHandle {
public:
    virtual ~MenuHandle();

protected:
    MenuHandle() = default;
    MenuHandle(const MenuHandle&) = default;
    MenuHandle& operator=(const MenuHandle&) = default;
};

// Copies share the handle; the count is atomic, so records holding one may
// cross threads.
using MenuHandleRef = std::shared_ptr<const MenuHandle>;

// One entry of an application's menus, as a backend read it.
struct MenuNode {
    enum class Kind { menu, item, check, radio, separator };

    Kind kind = Kind::item;
    QString title;
    bool enabled = true;
    std::optional<KeyChord> shortcut;
    MenuHandleRef handle;     // what pressing it takes; none for what cannot be pressed
    QList<MenuNode> children; // a menu's entries, in order

    bool isMenu() const { return kind == Kind::menu; }
};

// The menus of one application's window, in the order its menu bar shows them.
struct MenuTree {
    QList<MenuNode> menus;
    // False when the application stopped answering half-way: what was read
    // is shown, but not kept as the application's menus.
    bool complete = true;
};
