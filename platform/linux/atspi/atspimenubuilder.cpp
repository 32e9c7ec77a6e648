#include "platform/linux/atspi/atspimenubuilder.h"

#include "platform/linux/atspi/atspimenuhandle.h"

#include <algorithm>

namespace {

// How far up the parents named in the bulk cache are followed.
constexpr int kMaxAncestors = 64;

} // namespace

bool AtspiMenuBuilder::isItemRole(uint role)
{
    return role == AtspiRole::menuItem || role == AtspiRole::checkMenuItem || role == AtspiRole::radioMenuItem;
}

bool AtspiMenuBuilder::isMenuRole(uint role)
{
    return role == AtspiRole::menu || role == AtspiRole::popupMenu;
}

bool AtspiMenuBuilder::isCommandButtonRole(uint role)
{
    return role == AtspiRole::pushButton || role == AtspiRole::checkBox || role == AtspiRole::radioButton;
}

void AtspiMenuBuilder::clear()
{
    nodes_.clear();
    honourVisible_ = true;
    windowTitle_.clear();
    complete_ = true;
    readAt_ = 0;
}

void AtspiMenuBuilder::stamp(bool complete, double readAt)
{
    complete_ = complete;
    readAt_ = readAt;
}

void AtspiMenuBuilder::settleVisibility(const AtspiRef& menuBar)
{
    if (!honourVisible_)
        return;
    QSet<AtspiRef> seen{menuBar};
    const QList<AtspiRef> entries = unseenChildren({menuBar}, seen);
    bool any = false;
    for (const AtspiRef& ref : unseenChildren(entries, seen)) {
        const Node node = nodes_.value(ref);
        if (!node.role || !isItemRole(*node.role) || !node.states)
            continue;
        if (AtspiState::has(*node.states, AtspiState::visible))
            return;
        any = true;
    }
    honourVisible_ = !any;
}

void AtspiMenuBuilder::takeCacheItems(const QList<AtspiCacheItem>& items)
{
    for (const AtspiCacheItem& item : items) {
        if (nodes_.size() >= kMaxNodes)
            break;
        Node node;
        node.ref = item.ref;
        node.parent = item.parent;
        if (item.children) {
            node.children = item.children->mid(0, AtspiObjects::kMaxChildren);
            node.childrenRead = true;
        } else if (item.childCount == 0) {
            node.childrenRead = true; // nothing to ask for
        }
        node.name = item.name;
        node.role = item.role;
        node.states = item.states.value(0) | (quint64(item.states.value(1)) << 32);
        nodes_.insert(node.ref, node);
    }
}

QList<AtspiRef> AtspiMenuBuilder::unseenChildren(const QList<AtspiRef>& refs, QSet<AtspiRef>& seen) const
{
    QList<AtspiRef> out;
    for (const AtspiRef& ref : refs) {
        for (const AtspiRef& child : nodes_.value(ref).children) {
            if (seen.size() >= kMaxNodes)
                return out;
            if (!seen.contains(child)) {
                seen.insert(child);
                out.append(child);
            }
        }
    }
    return out;
}

bool AtspiMenuBuilder::descendsFrom(const AtspiRef& ref, const AtspiRef& ancestor) const
{
    AtspiRef at = ref;
    for (int depth = 0; depth < kMaxAncestors && !at.isNull(); ++depth) {
        if (at == ancestor)
            return true;
        at = nodes_.value(at).parent;
    }
    return false;
}

QList<AtspiRef> AtspiMenuBuilder::ancestorsOf(const AtspiRef& ref) const
{
    QList<AtspiRef> out;
    for (AtspiRef at = nodes_.value(ref).parent; !at.isNull() && out.size() < kMaxAncestors && !out.contains(at);
         at = nodes_.value(at).parent)
        out.append(at);
    return out;
}

QList<AtspiRef> AtspiMenuBuilder::windowsInOrder(const QList<AtspiRef>& windows) const
{
    // The window the user was in, by its title; else the active one (often
    // none: the panel has the focus by now); then the others in the
    // application's order.
    QList<AtspiRef> titled, active, others;
    for (const AtspiRef& w : windows) {
        const Node node = nodes_.value(w);
        if (!windowTitle_.isEmpty() && node.name == windowTitle_)
            titled.append(w);
        else if (AtspiState::has(node.states.value_or(0), AtspiState::active))
            active.append(w);
        else
            others.append(w);
    }
    return titled + active + others;
}

std::optional<AtspiRef> AtspiMenuBuilder::findMenuBarInCache(const QList<AtspiRef>& windows) const
{
    // The bulk cache links every object to its parent, so a window's menu bar
    // is found without walking down to it. When a window holds more than one
    // (LibreOffice), only the walk knows which comes first.
    const QSet<AtspiRef> windowSet(windows.begin(), windows.end());
    QHash<AtspiRef, QList<AtspiRef>> barsIn; // by window
    for (auto it = nodes_.cbegin(); it != nodes_.cend(); ++it) {
        if (it->role != AtspiRole::menuBar)
            continue;
        for (const AtspiRef& above : ancestorsOf(it.key())) {
            if (windowSet.contains(above))
                barsIn[above].append(it.key());
        }
    }
    for (const AtspiRef& window : windowsInOrder(windows)) {
        const QList<AtspiRef> bars = barsIn.value(window);
        if (bars.size() == 1)
            return bars.first();
        if (bars.size() > 1)
            return std::nullopt;
    }
    return std::nullopt;
}

std::optional<AtspiRef> AtspiMenuBuilder::findMenuButtonInCache(const QList<AtspiRef>& windows) const
{
    // Of the window's toggle buttons, the one with the most command buttons
    // below it: the main menu, whatever the language calls it. Each command
    // counts for the nearest toggle button above it.
    QHash<AtspiRef, int> commands;
    for (auto it = nodes_.cbegin(); it != nodes_.cend(); ++it) {
        if (!it->role || !isCommandButtonRole(*it->role) || it->name.trimmed().isEmpty())
            continue;
        const QList<AtspiRef> above = ancestorsOf(it.key());
        for (int depth = 0; depth < kMaxDepth && depth < above.size(); ++depth) {
            if (nodes_.value(above[depth]).role == AtspiRole::toggleButton) {
                ++commands[above[depth]];
                break;
            }
        }
    }
    const QSet<AtspiRef> windowSet(windows.begin(), windows.end());
    QHash<AtspiRef, QList<AtspiRef>> buttonsIn; // by window
    for (auto it = commands.cbegin(); it != commands.cend(); ++it) {
        for (const AtspiRef& above : ancestorsOf(it.key())) {
            if (windowSet.contains(above))
                buttonsIn[above].append(it.key());
        }
    }
    for (const AtspiRef& window : windowsInOrder(windows)) {
        std::optional<AtspiRef> best;
        for (const AtspiRef& button : buttonsIn.value(window)) {
            const int count = commands.value(button);
            if (!best || count > commands.value(*best) || (count == commands.value(*best) && button.path < best->path))
                best = button;
        }
        if (best)
            return best;
    }
    return std::nullopt;
}

int AtspiMenuBuilder::commandButtonsBelow(const AtspiRef& ref) const
{
    // Breadth first, each object once: a popover that links back into itself
    // counts each of its buttons once.
    QSet<AtspiRef> seen{ref};
    QList<AtspiRef> level{ref};
    int count = 0;
    for (int depth = 0; depth <= kMaxDepth && !level.isEmpty(); ++depth) {
        QList<AtspiRef> next;
        for (const AtspiRef& child : unseenChildren(level, seen)) {
            const Node& node = nodes_.value(child);
            if (node.role && isCommandButtonRole(*node.role) && !node.name.trimmed().isEmpty())
                ++count;
            else
                next.append(child);
        }
        level = next;
    }
    return count;
}

QList<AtspiRef> AtspiMenuBuilder::commandHolders(const AtspiRef& button) const
{
    // The button itself (a popup held as its child), then the popovers that
    // name it as their parent without being among its children (GTK 3).
    QList<AtspiRef> linked;
    const QList<AtspiRef> children = nodes_.value(button).children;
    const QSet<AtspiRef> held(children.begin(), children.end());
    for (auto it = nodes_.cbegin(); it != nodes_.cend(); ++it) {
        if (it->parent == button && it.key() != button && !held.contains(it.key()))
            linked.append(it.key());
    }
    std::sort(linked.begin(), linked.end(), [](const AtspiRef& a, const AtspiRef& b) {
        // Object paths end in a number: the one made first comes first.
        return a.path.size() != b.path.size() ? a.path.size() < b.path.size() : a.path < b.path;
    });
    return QList<AtspiRef>{button} + linked.mid(0, kMaxPopovers);
}

MenuNode AtspiMenuBuilder::itemNode(const AtspiRef& ref, const Node& node, const QString& title) const
{
    MenuNode item;
    item.title = title;
    item.enabled = AtspiState::has(node.states.value_or(0), AtspiState::sensitive);
    item.handle = std::make_shared<AtspiMenuHandle>(ref, item.enabled, readAt_);
    if (node.role == AtspiRole::checkMenuItem || node.role == AtspiRole::checkBox)
        item.kind = MenuNode::Kind::check;
    else if (node.role == AtspiRole::radioMenuItem || node.role == AtspiRole::radioButton)
        item.kind = MenuNode::Kind::radio;
    return item;
}

MenuTree AtspiMenuBuilder::makeButtonMenu(const AtspiRef& button) const
{
    inTree_.clear();
    claim(button);
    const Node node = nodes_.value(button);
    MenuNode menu;
    menu.kind = MenuNode::Kind::menu;
    menu.title = node.name.trimmed();
    if (menu.title.isEmpty())
        menu.title = QStringLiteral("Menu");
    menu.enabled = AtspiState::has(node.states.value_or(0), AtspiState::sensitive);
    // The button's own children, then its linked popovers' (the first holder is the button).
    collectButtons(node.children + commandHolders(button).mid(1), 0, menu.children);
    return MenuTree{{menu}, complete_};
}

void AtspiMenuBuilder::collectButtons(const QList<AtspiRef>& children, int depth, QList<MenuNode>& out) const
{
    // The popover's layout (boxes, stacks of submenus) is flattened: its
    // buttons in order, each a command.
    if (depth > kMaxDepth)
        return;
    for (const AtspiRef& ref : children) {
        const Node node = nodes_.value(ref);
        if (!node.role || !claim(ref))
            continue;
        if (isCommandButtonRole(*node.role)) {
            const NameAndShortcut named = splitDrawnShortcut(node.name);
            if (named.name.isEmpty())
                continue;
            MenuNode item = itemNode(ref, node, named.name);
            // A button reports its mnemonic ("<Alt>s") where an item reports its shortcut.
            item.shortcut = translateKeyBinding(node.keyBinding, item.title);
            if (item.shortcut && isMnemonicOf(*item.shortcut, item.title))
                item.shortcut.reset();
            if (!item.shortcut)
                item.shortcut = drawnShortcut(node, named);
            out.append(item);
            continue;
        }
        collectButtons(node.children, depth + 1, out);
    }
}

std::optional<KeyChord> AtspiMenuBuilder::drawnShortcut(const Node& item, const NameAndShortcut& named) const
{
    if (named.key)
        return named.key;
    // Where the item shows its shortcut in a label of its own.
    for (const AtspiRef& ref : item.children) {
        const Node& child = nodes_.value(ref);
        if (child.role == AtspiRole::label || child.role == AtspiRole::acceleratorLabel) {
            if (auto key = translateDrawnShortcut(child.name))
                return key;
        }
    }
    return std::nullopt;
}

bool AtspiMenuBuilder::hidden(const Node& node) const
{
    return honourVisible_ && node.states && !AtspiState::has(*node.states, AtspiState::visible);
}

bool AtspiMenuBuilder::claim(const AtspiRef& ref) const
{
    // A menu is a tree; an application that links an object from two places
    // (or into a cycle) must not make the result grow without end.
    if (inTree_.contains(ref) || inTree_.size() >= kMaxNodes)
        return false;
    inTree_.insert(ref);
    return true;
}

MenuTree AtspiMenuBuilder::makeMenuBar(const AtspiRef& menuBar) const
{
    inTree_.clear();
    claim(menuBar);
    MenuTree tree;
    tree.complete = complete_;
    for (const AtspiRef& ref : nodes_.value(menuBar).children) {
        const Node node = nodes_.value(ref);
        if (!node.role || hidden(node) || !claim(ref))
            continue;
        QList<AtspiRef> items;
        if (*node.role == AtspiRole::menu) {
            items = node.children; // GTK: the entry is the menu
        } else if (isItemRole(*node.role)) {
            for (const AtspiRef& child : node.children) { // Qt: the entry holds a popup menu
                if (isMenuRole(nodes_.value(child).role.value_or(0)) && claim(child))
                    items += nodes_.value(child).children;
            }
        } else {
            continue;
        }
        MenuNode menu;
        menu.kind = MenuNode::Kind::menu;
        menu.title = node.name.trimmed();
        menu.enabled = AtspiState::has(node.states.value_or(0), AtspiState::sensitive);
        menu.children = makeMenuChildren(items, 0);
        tree.menus.append(menu);
    }
    return tree;
}

QList<MenuNode> AtspiMenuBuilder::makeMenuChildren(const QList<AtspiRef>& children, int depth) const
{
    QList<MenuNode> out;
    if (depth > kMaxDepth)
        return out;
    for (const AtspiRef& ref : children) {
        const Node node = nodes_.value(ref);
        if (!node.role || hidden(node) || !claim(ref))
            continue;
        const uint role = *node.role;
        if (role == AtspiRole::popupMenu) {
            out += makeMenuChildren(node.children, depth + 1); // a holder of items, not a menu of its own
            continue;
        }
        if (role != AtspiRole::menu && !isItemRole(role))
            continue; // separators, tearoffs and anything unexpected
        const NameAndShortcut named = splitDrawnShortcut(node.name);
        MenuNode item = itemNode(ref, node, named.name);

        // A submenu: GTK's menu role (even while it is empty because it is
        // filled only when opened), or an item holding a popup menu.
        QList<AtspiRef> submenuItems;
        bool isSubmenu = role == AtspiRole::menu;
        if (isSubmenu) {
            submenuItems = node.children;
        } else {
            for (const AtspiRef& child : node.children) {
                if (isMenuRole(nodes_.value(child).role.value_or(0)) && claim(child)) {
                    isSubmenu = true;
                    submenuItems += nodes_.value(child).children;
                }
            }
        }
        if (isSubmenu) {
            item.kind = MenuNode::Kind::menu;
            item.handle.reset();
            item.children = makeMenuChildren(submenuItems, depth + 1);
        } else {
            item.shortcut = translateKeyBinding(node.keyBinding, item.title);
            if (!item.shortcut)
                item.shortcut = drawnShortcut(node, named);
        }
        out.append(item);
    }
    return out;
}
