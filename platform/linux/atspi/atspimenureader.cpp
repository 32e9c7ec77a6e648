#include "platform/linux/atspi/atspimenureader.h"

#include "platform/clock.h"
#include "platform/linux/atspi/atspimenuhandle.h"
#include "platform/linux/keybinding/keybinding.h"

#include <algorithm>

namespace {

// Bounds that no real menu bar reaches; they keep a misbehaving application
// from making the reading endless.
constexpr int kMaxDepth = 16;
constexpr int kMaxNodes = 50000;
constexpr int kMaxContainerDepth = 8;
// Toggle buttons looked into for a popover of commands.
constexpr int kMaxMenuButtons = 8;
// A window's own panels looked into as popovers.
constexpr int kMaxPopovers = 16;

// Windows of one application searched for a menu bar.
constexpr int kMaxWindows = 64;
// How far up the parents named in the bulk cache are followed.
constexpr int kMaxAncestors = 64;

enum Want { wantChildren = 1, wantInfo = 2, wantKeyBinding = 4, wantParent = 8 };

bool isItemRole(uint role)
{
    return role == AtspiRole::menuItem || role == AtspiRole::checkMenuItem || role == AtspiRole::radioMenuItem;
}

bool isMenuRole(uint role)
{
    return role == AtspiRole::menu || role == AtspiRole::popupMenu;
}

// Windows hold the menu bar inside layout containers; nothing else is searched.
bool isContainerRole(uint role)
{
    switch (role) {
    case AtspiRole::frame:
    case AtspiRole::window:
    case AtspiRole::dialog:
    case AtspiRole::filler:
    case AtspiRole::panel:
    case AtspiRole::scrollPane:
    case AtspiRole::viewport:
    case AtspiRole::rootPane:
    case AtspiRole::layeredPane:
    case AtspiRole::glassPane:
    case AtspiRole::splitPane:
    case AtspiRole::internalFrame:
    case AtspiRole::optionPane:
        return true;
    default:
        return false;
    }
}

} // namespace

AtspiMenuReader::AtspiMenuReader(AtspiObjects& objects, const Clock& clock) : objects_(objects), clock_(clock) {}

std::optional<MenuTree> AtspiMenuReader::readMenuBar(const AtspiRef& application, const QString& toolkit,
                                                     const QString& windowTitle)
{
    nodes_.clear();
    toggleButtons_.clear();
    popovers_.clear();
    foundMenuBar_ = false;
    complete_ = true;
    stopped_ = false;
    asked_ = 0;
    startedAt_ = clock_.seconds();
    windowTitle_ = windowTitle;
    if (application.isNull())
        return std::nullopt;

    // Qt marks every item of a closed menu invisible, so visibility means nothing there.
    honourVisible_ = !toolkit.startsWith(QLatin1String("Qt"));

    // An application that does not answer its first call is not asked again.
    if (!fetchFromCache(application) && !complete_)
        return std::nullopt;
    const std::optional<AtspiRef> menuBar = findMenuBar(application);
    if (!menuBar) {
        // A closed popover's buttons are not on screen, yet they are its commands.
        honourVisible_ = false;
        auto button = findMenuButtonInCache(nodes_.value(application).children);
        if (!button)
            button = pickMenuButton();
        if (!button)
            return std::nullopt;
        for (const AtspiRef& holder : commandHolders(*button)) {
            if (!prefetchFromCache(holder) || !fetchSubtree(holder))
                complete_ = false;
        }
        readAt_ = clock_.seconds();
        return makeButtonMenu(*button);
    }
    foundMenuBar_ = true;
    // LibreOffice asked by any client while it starts never marks its menu
    // items visible afterwards; hiding them all would leave nothing to list.
    settleVisibility(*menuBar);
    if (!prefetchFromCache(*menuBar) || !fetchSubtree(*menuBar))
        complete_ = false;
    readAt_ = clock_.seconds();
    return makeMenuBar(*menuBar);
}

bool AtspiMenuReader::fetchFromCache(const AtspiRef& application)
{
    bool timedOut = false;
    ++asked_;
    const std::optional<QList<AtspiCacheItem>> items = objects_.cache(application, timedOut);
    if (timedOut) {
        complete_ = false;
        stopped_ = true;
    }
    if (!items)
        return false;
    takeCacheItems(*items);
    return true;
}

void AtspiMenuReader::takeCacheItems(const QList<AtspiCacheItem>& items)
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

bool AtspiMenuReader::fetch(const QList<AtspiRef>& refs, int want)
{
    if (stopped_)
        return false;
    using Question = AtspiObjects::Question;
    QList<AtspiObjects::Ask> questions;
    for (const AtspiRef& ref : refs) {
        if (nodes_.size() >= kMaxNodes && !nodes_.contains(ref))
            break;
        Node& node = nodes_[ref];
        node.ref = ref;
        if ((want & wantChildren) && !node.childrenRead)
            questions.append({ref, Question::children});
        if ((want & wantInfo) && !node.role) {
            questions.append({ref, Question::role});
            questions.append({ref, Question::state});
            questions.append({ref, Question::name});
        }
        if ((want & wantParent) && node.parent.isNull())
            questions.append({ref, Question::parent});
        if ((want & wantKeyBinding) && !node.keyBindingRead && (!node.role || isItemRole(*node.role)))
            questions.append({ref, Question::keyBinding});
    }
    if (questions.isEmpty())
        return true;
    // Past its budget the reading keeps what it has and says it is incomplete.
    const int room = clock_.seconds() - startedAt_ > kMaxSeconds ? 0 : kMaxQuestions - asked_;
    if (questions.size() > room) {
        questions.resize(std::max(room, 0));
        stopped_ = true;
        complete_ = false;
    }
    asked_ += int(questions.size());
    const QList<AtspiObjects::Answer> answers = objects_.ask(questions);
    for (qsizetype i = 0; i < questions.size() && i < answers.size(); ++i) {
        if (answers[i].timedOut) {
            stopped_ = true;
            complete_ = false;
        }
        take(nodes_[questions[i].ref], questions[i].question, answers[i].value);
    }
    return !stopped_;
}

void AtspiMenuReader::take(Node& node, AtspiObjects::Question question, const AtspiObjects::Value& value)
{
    using Question = AtspiObjects::Question;
    switch (question) {
    case Question::children:
        if (const auto* children = std::get_if<QList<AtspiRef>>(&value))
            node.children = children->mid(0, AtspiObjects::kMaxChildren);
        node.childrenRead = true;
        break;
    case Question::role:
        if (const auto* role = std::get_if<uint>(&value))
            node.role = *role;
        break;
    case Question::state:
        if (const auto* states = std::get_if<quint64>(&value))
            node.states = *states;
        break;
    case Question::name:
        if (const auto* name = std::get_if<QString>(&value))
            node.name = *name;
        break;
    case Question::keyBinding:
        if (const auto* binding = std::get_if<QString>(&value))
            node.keyBinding = *binding;
        node.keyBindingRead = true;
        break;
    case Question::parent:
        if (const auto* parent = std::get_if<AtspiRef>(&value))
            node.parent = *parent;
        break;
    }
}

QList<AtspiRef> AtspiMenuReader::unseenChildren(const QList<AtspiRef>& refs, QSet<AtspiRef>& seen) const
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

std::optional<AtspiRef> AtspiMenuReader::findMenuBar(const AtspiRef& application)
{
    if (!fetch({application}, wantChildren))
        return std::nullopt;
    const QList<AtspiRef> windows = nodes_.value(application).children.mid(0, kMaxWindows);
    if (!fetch(windows, wantInfo))
        return std::nullopt;

    if (auto cached = findMenuBarInCache(windows))
        return cached;

    for (const AtspiRef& window : windowsInOrder(windows)) {
        // Breadth first through layout containers, remembering each object's
        // position so that the first menu bar in the window's own order wins
        // (LibreOffice keeps a copy with wrong shortcuts further down). An
        // object met again (linked from two places, or from below) is not
        // looked into twice.
        QList<std::pair<AtspiRef, QList<int>>> level{{window, {}}};
        QSet<AtspiRef> seen{window};
        std::optional<std::pair<QList<int>, AtspiRef>> best;
        for (int depth = 0; depth < kMaxContainerDepth && !level.isEmpty(); ++depth) {
            QList<AtspiRef> containers;
            for (const auto& entry : level)
                containers.append(entry.first);
            if (!fetch(containers, wantChildren))
                return std::nullopt;
            QList<std::pair<AtspiRef, QList<int>>> next;
            QList<AtspiRef> kids;
            for (const auto& [ref, position] : level) {
                const QList<AtspiRef> children = nodes_.value(ref).children;
                for (int i = 0; i < children.size() && seen.size() < kMaxNodes; ++i) {
                    if (seen.contains(children[i]))
                        continue;
                    seen.insert(children[i]);
                    next.append({children[i], position + QList<int>{i}});
                    kids.append(children[i]);
                }
            }
            if (!fetch(kids, wantInfo))
                return std::nullopt;
            level.clear();
            for (const auto& [ref, position] : next) {
                const uint role = nodes_.value(ref).role.value_or(0);
                if (role == AtspiRole::menuBar) {
                    if (!best || position < best->first)
                        best = std::pair{position, ref};
                } else if (role == AtspiRole::toggleButton) {
                    if (toggleButtons_.size() < kMaxMenuButtons)
                        toggleButtons_.append(ref);
                } else if (isContainerRole(role)) {
                    // GTK lists a window's popovers among its own children.
                    if (depth == 0 && role == AtspiRole::panel && popovers_.size() < kMaxPopovers)
                        popovers_.append(ref);
                    level.append({ref, position});
                }
            }
        }
        if (best)
            return best->second;
    }
    return std::nullopt;
}

bool AtspiMenuReader::descendsFrom(const AtspiRef& ref, const AtspiRef& ancestor) const
{
    AtspiRef at = ref;
    for (int depth = 0; depth < kMaxAncestors && !at.isNull(); ++depth) {
        if (at == ancestor)
            return true;
        at = nodes_.value(at).parent;
    }
    return false;
}

QList<AtspiRef> AtspiMenuReader::ancestorsOf(const AtspiRef& ref) const
{
    QList<AtspiRef> out;
    for (AtspiRef at = nodes_.value(ref).parent; !at.isNull() && out.size() < kMaxAncestors && !out.contains(at);
         at = nodes_.value(at).parent)
        out.append(at);
    return out;
}

QList<AtspiRef> AtspiMenuReader::windowsInOrder(const QList<AtspiRef>& windows) const
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

std::optional<AtspiRef> AtspiMenuReader::findMenuBarInCache(const QList<AtspiRef>& windows) const
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

namespace {

bool isCommandButtonRole(uint role)
{
    return role == AtspiRole::pushButton || role == AtspiRole::checkBox || role == AtspiRole::radioButton;
}

} // namespace

std::optional<AtspiRef> AtspiMenuReader::findMenuButtonInCache(const QList<AtspiRef>& windows) const
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

int AtspiMenuReader::commandButtonsBelow(const AtspiRef& ref) const
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

QList<AtspiRef> AtspiMenuReader::commandHolders(const AtspiRef& button) const
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

std::optional<AtspiRef> AtspiMenuReader::pickMenuButton()
{
    // A popover the walk met among a window's children belongs to the
    // button it names as its parent.
    QList<AtspiRef> buttons = toggleButtons_;
    if (!popovers_.isEmpty()) {
        if (!fetch(popovers_, wantParent)) {
            complete_ = false;
            return std::nullopt;
        }
        QList<AtspiRef> parents;
        for (const AtspiRef& popover : std::as_const(popovers_)) {
            const AtspiRef parent = nodes_.value(popover).parent;
            if (!parent.isNull() && !parents.contains(parent))
                parents.append(parent);
        }
        if (!fetch(parents, wantInfo)) {
            complete_ = false;
            return std::nullopt;
        }
        for (const AtspiRef& parent : std::as_const(parents)) {
            if (nodes_.value(parent).role == AtspiRole::toggleButton && !buttons.contains(parent))
                buttons.append(parent);
        }
    }
    std::optional<AtspiRef> best;
    int most = 0;
    for (const AtspiRef& button : std::as_const(buttons)) {
        int commands = 0;
        for (const AtspiRef& holder : commandHolders(button)) {
            if (!fetchSubtree(holder)) {
                complete_ = false;
                return best;
            }
            commands += commandButtonsBelow(holder);
        }
        if (commands > most) {
            most = commands;
            best = button;
        }
    }
    return best;
}

MenuNode AtspiMenuReader::itemNode(const AtspiRef& ref, const Node& node, const QString& title) const
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

MenuTree AtspiMenuReader::makeButtonMenu(const AtspiRef& button) const
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

void AtspiMenuReader::collectButtons(const QList<AtspiRef>& children, int depth, QList<MenuNode>& out) const
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

bool AtspiMenuReader::prefetchFromCache(const AtspiRef& menuBar)
{
    // Everything below the menu bar that the cache knows, in one round: the
    // order of each menu's children and every item's key binding.
    QList<AtspiRef> below;
    for (auto it = nodes_.cbegin(); it != nodes_.cend(); ++it) {
        if (!it->parent.isNull() && descendsFrom(it.key(), menuBar) && !hidden(*it))
            below.append(it.key());
    }
    return below.isEmpty() || fetch(below, wantChildren | wantKeyBinding);
}

bool AtspiMenuReader::fetchSubtree(const AtspiRef& top)
{
    QSet<AtspiRef> seen{top};
    QList<AtspiRef> level{top};
    for (int depth = 0; depth < kMaxDepth && !level.isEmpty(); ++depth) {
        if (!fetch(level, wantChildren | wantInfo | wantKeyBinding))
            return false;
        QList<AtspiRef> next;
        for (const AtspiRef& child : unseenChildren(level, seen)) {
            const auto known = nodes_.constFind(child);
            if (known != nodes_.cend()) {
                // Separators and hidden items need no further calls.
                if (known->role && (*known->role == AtspiRole::separator || *known->role == AtspiRole::tearoffMenuItem))
                    continue;
                if (known->states && hidden(*known))
                    continue;
            }
            next.append(child);
        }
        level = next;
    }
    return true;
}

void AtspiMenuReader::settleVisibility(const AtspiRef& menuBar)
{
    if (!honourVisible_)
        return;
    // The bar's menus and the items of each: two rounds that the subtree
    // fetch would make anyway.
    if (!fetch({menuBar}, wantChildren | wantInfo))
        return;
    QSet<AtspiRef> seen{menuBar};
    const QList<AtspiRef> entries = unseenChildren({menuBar}, seen);
    if (!fetch(entries, wantChildren | wantInfo))
        return;
    const QList<AtspiRef> items = unseenChildren(entries, seen);
    if (!fetch(items, wantInfo))
        return;
    bool any = false;
    for (const AtspiRef& ref : items) {
        const Node node = nodes_.value(ref);
        if (!node.role || !isItemRole(*node.role) || !node.states)
            continue;
        if (AtspiState::has(*node.states, AtspiState::visible))
            return;
        any = true;
    }
    honourVisible_ = !any;
}

std::optional<KeyChord> AtspiMenuReader::drawnShortcut(const Node& item, const NameAndShortcut& named) const
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

bool AtspiMenuReader::hidden(const Node& node) const
{
    return honourVisible_ && node.states && !AtspiState::has(*node.states, AtspiState::visible);
}

bool AtspiMenuReader::claim(const AtspiRef& ref) const
{
    // A menu is a tree; an application that links an object from two places
    // (or into a cycle) must not make the result grow without end.
    if (inTree_.contains(ref) || inTree_.size() >= kMaxNodes)
        return false;
    inTree_.insert(ref);
    return true;
}

MenuTree AtspiMenuReader::makeMenuBar(const AtspiRef& menuBar) const
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

QList<MenuNode> AtspiMenuReader::makeMenuChildren(const QList<AtspiRef>& children, int depth) const
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
