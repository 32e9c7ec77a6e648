#pragma once

#include "platform/linux/atspi/atspiobjects.h"
#include "platform/linux/keybinding/keybinding.h"
#include "platform/menutree.h"

#include <QHash>
#include <QSet>

#include <optional>

// What a reading has learned of an application's objects, and the steps that
// turn it into a menu tree: which window's menu bar, which menu button stands
// in where there is none, which objects are hidden, which texts are shortcuts.
// It asks the application nothing; AtspiMenuReader does the asking.
//
// The application decides every fact held here, so each step visits an
// object once and takes a bounded number of objects: objects that hold
// themselves or appear in two menus make a tree with each object once.
class AtspiMenuBuilder {
public:
    // Bounds that no real menu bar reaches.
    static constexpr int kMaxDepth = 16;
    static constexpr int kMaxNodes = 50000;
    // Popovers linked to one menu button.
    static constexpr int kMaxPopovers = 16;

    // Raw facts about one object, as fetched.
    struct Node {
        AtspiRef ref;
        AtspiRef parent; // known from the bulk cache, else asked for where needed
        std::optional<uint> role;
        QString name;
        std::optional<quint64> states;
        QString keyBinding;
        QList<AtspiRef> children;
        bool childrenRead = false;
        bool keyBindingRead = false;
    };

    static bool isItemRole(uint role);
    static bool isMenuRole(uint role);
    static bool isCommandButtonRole(uint role);

    // Forgets everything, for the next reading.
    void clear();
    QHash<AtspiRef, Node>& nodes() { return nodes_; }
    const QHash<AtspiRef, Node>& nodes() const { return nodes_; }
    // Takes a bulk-cache reply, up to kMaxNodes objects.
    void takeCacheItems(const QList<AtspiCacheItem>& items);

    // The title of the window the user was in, searched first.
    void setWindowTitle(const QString& title) { windowTitle_ = title; }
    // Whether objects not marked visible are left out (Qt marks every item
    // of a closed menu invisible, and a popover's buttons are off screen).
    void setHonourVisible(bool honour) { honourVisible_ = honour; }
    bool honoursVisible() const { return honourVisible_; }
    bool hidden(const Node& node) const;
    // Stops leaving out invisible items when the bar's menus hold items and
    // not one of them is marked visible: then the mark tells nothing.
    void settleVisibility(const AtspiRef& menuBar);
    // What the trees made next say of their reading: whether it got all it
    // asked for, and when (for the press handles).
    void stamp(bool complete, double readAt);

    // The windows in the order they are searched: the one the user was in first.
    QList<AtspiRef> windowsInOrder(const QList<AtspiRef>& windows) const;
    // The window's menu bar as far as the bulk cache tells.
    std::optional<AtspiRef> findMenuBarInCache(const QList<AtspiRef>& windows) const;
    // Where a window has no menu bar: the menu button whose popover holds its
    // commands (GTK 3 header bars' "Menu"), as far as the bulk cache tells.
    std::optional<AtspiRef> findMenuButtonInCache(const QList<AtspiRef>& windows) const;
    bool descendsFrom(const AtspiRef& ref, const AtspiRef& ancestor) const;
    // The children of `refs` that `seen` does not hold yet, in order; adds them to it.
    QList<AtspiRef> unseenChildren(const QList<AtspiRef>& refs, QSet<AtspiRef>& seen) const;
    int commandButtonsBelow(const AtspiRef& ref) const;
    // Where a menu button's commands are: below it, and in the popovers linked to it.
    QList<AtspiRef> commandHolders(const AtspiRef& button) const;

    // The tree for a menu button: one menu named after the button, holding
    // the buttons, check boxes and radio buttons of its popover.
    MenuTree makeButtonMenu(const AtspiRef& button) const;
    // The tree for the menu bar. Every object appears in it at most once,
    // however the application links its objects.
    MenuTree makeMenuBar(const AtspiRef& menuBar) const;

private:
    // The objects above `ref` (its parent first), each once.
    QList<AtspiRef> ancestorsOf(const AtspiRef& ref) const;
    QList<MenuNode> makeMenuChildren(const QList<AtspiRef>& children, int depth) const;
    void collectButtons(const QList<AtspiRef>& children, int depth, QList<MenuNode>& out) const;
    // A command of the tree, pressed through `ref`.
    MenuNode itemNode(const AtspiRef& ref, const Node& node, const QString& title) const;
    // Claims an object for the tree being made; false when it is already in it.
    bool claim(const AtspiRef& ref) const;
    // A shortcut the item draws rather than reports in its key binding: in
    // its name after a tab (`named`, as split), else in a label among its children.
    std::optional<KeyChord> drawnShortcut(const Node& item, const NameAndShortcut& named) const;

    QHash<AtspiRef, Node> nodes_;
    bool honourVisible_ = true;
    QString windowTitle_;
    bool complete_ = true;
    double readAt_ = 0;
    mutable QSet<AtspiRef> inTree_;
};
