#pragma once

#include "platform/accessibilityelement.h"
#include "platform/linux/atspi/atspibus.h"
#include "platform/linux/atspi/keybinding.h"

#include <QDBusArgument>
#include <QHash>
#include <QSet>

// Reads an application's menu bar over AT-SPI in a few pipelined rounds of
// asynchronous calls (plus the toolkit's bulk cache where it has one) and
// returns it as a tree of elements, so that walking it costs no more calls.
class AtspiMenuReader {
public:
    explicit AtspiMenuReader(AtspiBus& bus);

    // The menu bar of the application's frame titled `windowTitle` (else its
    // active frame, else its first frame with one), or nothing. Stops at the
    // first call the application leaves unanswered; the menu bar says whether
    // the reading is complete.
    AccessibilityElementRef readMenuBar(const AtspiRef& application, qint32 pid, const QString& toolkit,
                                        const QString& windowTitle = {});

    // Whether the last reading found a real menu bar, not a menu button standing in.
    bool foundMenuBar() const { return foundMenuBar_; }

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

    // One object of a bulk-cache reply (Cache.GetItems), in either layout.
    struct CacheItem {
        AtspiRef ref;
        AtspiRef parent;
        std::optional<QList<AtspiRef>> children; // the layout with child lists
        int childCount = -1;                     // the layout with counts (GTK: −1 for menus)
        QString name;
        uint role = 0;
        QList<uint> states;
    };

    // The steps that work only on what was fetched, open to tests and fuzzing:
    // what the other application sends decides all of their input.
    // The objects of a bulk-cache reply; nothing when it is not one.
    static std::optional<QList<CacheItem>> readCacheItems(const QDBusArgument& reply);
    // Takes a bulk-cache reply; false when it is not one.
    bool takeCacheItems(const QDBusArgument& reply);
    void takeCacheItems(const QList<CacheItem>& items);
    // The window's menu bar as far as the bulk cache tells.
    std::optional<AtspiRef> findMenuBarInCache(const QList<AtspiRef>& windows) const;
    // Where a window has no menu bar: the menu button whose popover holds its
    // commands (GTK 3 header bars' "Menu"), as far as the bulk cache tells.
    std::optional<AtspiRef> findMenuButtonInCache(const QList<AtspiRef>& windows) const;
    // The element tree for a menu button: one menu named after the button,
    // holding the buttons, check boxes and radio buttons of its popover.
    AccessibilityElementRef makeButtonMenu(const AtspiRef& button, qint32 pid) const;
    // The element tree for the fetched menu bar. Every object appears in it at
    // most once, however the application links its objects.
    AccessibilityElementRef makeMenuBar(const AtspiRef& menuBar, qint32 pid) const;
    QHash<AtspiRef, Node>& nodes() { return nodes_; }
    // Stops leaving out invisible items when the bar's menus hold items and
    // not one of them is marked visible: then the mark tells nothing.
    void settleVisibility(const AtspiRef& menuBar);

private:
    bool fetchFromCache(const AtspiRef& application);
    std::optional<AtspiRef> findMenuBar(const AtspiRef& application);
    // The windows in the order they are searched: the one the user was in first.
    QList<AtspiRef> windowsInOrder(const QList<AtspiRef>& windows) const;
    bool prefetchFromCache(const AtspiRef& menuBar);
    bool descendsFrom(const AtspiRef& ref, const AtspiRef& ancestor) const;
    // Of the toggle buttons the walk met, the one with the most command
    // buttons below it, once their subtrees are fetched.
    std::optional<AtspiRef> pickMenuButton();
    int commandButtonsBelow(const AtspiRef& ref, int depth) const;
    // Where a menu button's commands are: below it, and in the popovers linked to it.
    QList<AtspiRef> commandHolders(const AtspiRef& button) const;
    bool fetchSubtree(const AtspiRef& menuBar);
    // One round of calls, all in flight at once, for what is not yet known of
    // `refs`; false when the application stopped answering.
    bool fetch(const QList<AtspiRef>& refs, int want);

    QList<AccessibilityElementRef> makeMenuChildren(const QList<AtspiRef>& children, qint32 pid, int depth) const;
    void collectButtons(const QList<AtspiRef>& children, qint32 pid, int depth, QList<AccessibilityElementRef>& out) const;
    // Claims an object for the tree being made; false when it is already in it.
    bool claim(const AtspiRef& ref) const;
    bool hidden(const Node& node) const;
    // A shortcut the item draws rather than reports in its key binding: in
    // its name after a tab (`named`, as split), else in a label among its children.
    std::optional<MenuKeyEquivalent> drawnShortcut(const Node& item, const NameAndShortcut& named) const;

    AtspiBus& bus_;
    QHash<AtspiRef, Node> nodes_;
    bool honourVisible_ = true;
    QString windowTitle_;
    QList<AtspiRef> toggleButtons_; // met while looking for a menu bar, in window order
    QList<AtspiRef> popovers_;      // panels among a window's own children, in window order
    bool complete_ = true;
    bool foundMenuBar_ = false;
    double readAt_ = 0;
    mutable QSet<AtspiRef> inTree_;
};
