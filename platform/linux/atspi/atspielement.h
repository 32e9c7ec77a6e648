#pragma once

#include "platform/accessibility.h"
#include "platform/linux/atspi/atspibus.h"
#include "platform/linux/exported/exportedmenunode.h"

#include <optional>

// An element of another application as Kestrio read it over AT-SPI, already in
// the shape the menu walk expects (menu bar › entries › menus › items). Menus
// that a toolkit does not expose as objects of their own are made up here and
// have no bus object; so do the items of menus read from the session bus,
// which carry how they are pressed instead.
class AtspiElement final : public AccessibilityElement {
public:
    enum class Kind { application, node };

    Kind kind = Kind::node;
    AtspiRef ref;     // null for made-up menus
    qint32 pid = 0;
    std::optional<quint64> window; // application: the window whose menu bar is read
    QString toolkit;               // application: as the bus names it
    bool complete = true;          // menu bar: every part of it answered
    QString role;     // the walk's role name
    QString title;
    bool enabled = false;
    std::optional<qint64> modifiers;
    std::optional<QString> keyCharacter;
    std::optional<qint64> virtualKey;
    QList<AccessibilityElementRef> children;
    std::optional<ExportedPress> exported; // items of an exported menu
    double readAt = 0; // monotonic seconds when the state was read

    // A node of a menu tree being made, as read at `readAt`.
    static std::shared_ptr<AtspiElement> node(const QString& role, const QString& title, const AtspiRef& ref, qint32 pid,
                                              double readAt)
    {
        auto e = std::make_shared<AtspiElement>();
        e->role = role;
        e->title = title;
        e->ref = ref;
        e->pid = pid;
        e->readAt = readAt;
        return e;
    }

    // The item's shortcut, in the shape menus report it.
    void setKey(const MenuKeyEquivalent& key)
    {
        modifiers = key.modifiers;
        keyCharacter = key.character;
        virtualKey = key.virtualKey;
    }
};
