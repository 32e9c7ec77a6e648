#include "platform/accessibility.h"
#include "platform/linux/atspi/atspielement.h"
#include "platform/linux/atspi/atspimenureader.h"
#include "support/atspicacheitems.h"
#include "support/dbusroundtrip.h"

#include <gtest/gtest.h>

namespace {

CacheRef object(int id)
{
    return {QStringLiteral(":1.7"), QDBusObjectPath(QStringLiteral("/o/%1").arg(id))};
}

ItemWithChildren item(int id, int parent, uint role, const QString& name, QList<int> children = {})
{
    ItemWithChildren i;
    i.self = object(id);
    i.application = object(0);
    i.parent = object(parent);
    i.role = role;
    i.name = name;
    for (int c : children)
        i.children.append(object(c));
    i.states = {(1u << AtspiState::sensitive) | (1u << AtspiState::visible), 0};
    return i;
}

// Each leaf's path; with `keys`, followed by its key character or code and modifiers.
QStringList titles(const AccessibilityElementRef& element, bool keys = false, const QString& path = {})
{
    QStringList out;
    const auto* e = dynamic_cast<const AtspiElement*>(element.get());
    for (const AccessibilityElementRef& child : e->children) {
        const auto* c = dynamic_cast<const AtspiElement*>(child.get());
        const QString here = c->title.isEmpty() ? path : path + "/" + c->title;
        if (c->children.isEmpty()) {
            QString key;
            if (keys && c->modifiers)
                key = QStringLiteral(" %1/%2").arg(c->keyCharacter ? *c->keyCharacter : QString::number(c->virtualKey.value_or(-1))).arg(*c->modifiers);
            out << here + key;
        }
        out += titles(child, keys, here);
    }
    return out;
}

// Feeds `items` to the reader as a bulk-cache reply that came over D-Bus.
bool feed(AtspiMenuReader& reader, DBusRoundTrip& wire, const QList<ItemWithChildren>& items)
{
    const std::optional<QVariant> reply = wire.received(QVariant::fromValue(items));
    return reply && reply->canConvert<QDBusArgument>() && reader.takeCacheItems(reply->value<QDBusArgument>());
}

// A bulk-cache reply as GTK sends it, with the links a broken or hostile
// application could add: an item listed in two menus, a menu that holds
// itself, an object that is its own parent.
TEST(AtspiMenuReader, ABulkCacheReplyBecomesATreeWithEveryObjectOnce)
{
    registerCacheItemTypes();
    using namespace AtspiRole;
    const QList<ItemWithChildren> items{
        item(1, 0, frame, "Letter", {2}),
        item(2, 1, menuBar, "", {3, 4}),
        item(3, 2, menu, "File", {5, 6, 3}), // holds itself
        item(4, 2, menu, "Edit", {6, 7}),    // shares Save with File
        item(5, 3, menuItem, "Open"),
        item(6, 3, menuItem, "Save"),
        item(7, 7, menuItem, "Undo"),        // its own parent
    };
    DBusRoundTrip wire;
    AtspiBus bus;
    AtspiMenuReader reader(bus);
    ASSERT_TRUE(feed(reader, wire, items));
    EXPECT_EQ(reader.nodes().size(), 7);
    const std::optional<AtspiRef> bar = reader.findMenuBarInCache({AtspiRef{":1.7", "/o/1"}});
    ASSERT_EQ(bar, (AtspiRef{":1.7", "/o/2"}));
    EXPECT_EQ(titles(reader.makeMenuBar(*bar, 1)), (QStringList{"/File/Open", "/File/Save", "/Edit/Undo"}));

    // Not a cache reply at all: refused, nothing taken.
    const std::optional<QVariant> other = wire.received(QVariant::fromValue(QList<CacheRef>{object(1), object(2)}));
    ASSERT_TRUE(other && other->canConvert<QDBusArgument>());
    AtspiMenuReader second(bus);
    EXPECT_FALSE(second.takeCacheItems(other->value<QDBusArgument>()));
    EXPECT_TRUE(second.nodes().isEmpty());
}

// An item not marked visible is one the application hides, unless no item of
// the bar is marked (LibreOffice asked by any client while it started).
TEST(AtspiMenuReader, InvisibleItemsAreLeftOutOnlyWhereSomeItemIsVisible)
{
    registerCacheItemTypes();
    using namespace AtspiRole;
    const uint shown = (1u << AtspiState::sensitive) | (1u << AtspiState::visible);
    const uint unmarked = 1u << AtspiState::sensitive;
    struct Case {
        uint open, checkOut, undo;
        QStringList listed;
    };
    const Case cases[]{
        {shown, unmarked, shown, {"/File/Open", "/Edit/Undo"}},
        {unmarked, unmarked, unmarked, {"/File/Open", "/File/Check Out", "/Edit/Undo"}},
        {unmarked, unmarked, shown, {"/File", "/Edit/Undo"}}, // File left empty
    };
    for (const Case& c : cases) {
        QList<ItemWithChildren> items{
            item(1, 0, frame, "Letter", {2}),
            item(2, 1, menuBar, "", {3, 4}),
            item(3, 2, menu, "File", {5, 6}),
            item(4, 2, menu, "Edit", {7}),
            item(5, 3, menuItem, "Open"),
            item(6, 3, menuItem, "Check Out"),
            item(7, 4, menuItem, "Undo"),
        };
        items[4].states = {c.open, 0};
        items[5].states = {c.checkOut, 0};
        items[6].states = {c.undo, 0};
        DBusRoundTrip wire;
        AtspiBus bus;
        AtspiMenuReader reader(bus);
        ASSERT_TRUE(feed(reader, wire, items));
        const AtspiRef bar{":1.7", "/o/2"};
        reader.settleVisibility(bar);
        EXPECT_EQ(titles(reader.makeMenuBar(bar, 1)), c.listed);
    }
}

// Items whose key binding names no accelerator but whose text shows one:
// after a tab in the name, or in a label of the item's own.
TEST(AtspiMenuReader, ShortcutsDrawnInTheItemsTextAreRead)
{
    registerCacheItemTypes();
    using namespace AtspiRole;
    const QList<ItemWithChildren> items{
        item(1, 0, frame, "Letter", {2, 20}),
        item(2, 1, menuBar, "", {3}),
        item(3, 2, menu, "File", {4, 5, 7, 9}),
        item(4, 3, menuItem, "Open…\tCtrl+O"),
        item(5, 3, menuItem, "Save", {6}),
        item(6, 5, label, "Ctrl+S"),
        item(7, 3, menuItem, "Print", {8}),
        item(8, 7, label, "Shift+Ctrl+P"), // the key binding wins
        item(9, 3, menuItem, "Write\t:w"),
        item(20, 1, toggleButton, "Menu", {21, 22}),
        item(21, 20, pushButton, "Save As…"),
        item(22, 20, pushButton, "Find…\tCtrl+F"),
    };
    DBusRoundTrip wire;
    AtspiBus bus;
    AtspiMenuReader reader(bus);
    ASSERT_TRUE(feed(reader, wire, items));
    const auto ref = [](int id) { return AtspiRef{":1.7", QStringLiteral("/o/%1").arg(id)}; };
    reader.nodes()[ref(4)].keyBinding = "o;<Alt>f:o;";
    reader.nodes()[ref(5)].keyBinding = "s;<Alt>f:s;";
    reader.nodes()[ref(7)].keyBinding = "p;<Alt>f:p;<Primary>p";
    reader.nodes()[ref(21)].keyBinding = "<Alt>a"; // a button's mnemonic
    reader.nodes()[ref(22)].keyBinding = "<Alt>f";
    EXPECT_EQ(titles(reader.makeMenuBar(ref(2), 1), true),
              (QStringList{"/File/Open… O/0", "/File/Save S/0", "/File/Print p/0", "/File/Write"}));
    EXPECT_EQ(titles(reader.makeButtonMenu(ref(20), 1), true), (QStringList{"/Menu/Save As…", "/Menu/Find… F/0"}));
}

// A header-bar window as GTK 3 shows it: no menu bar; the popover of the menu
// button is among the window's own children, names the button as its parent,
// and holds its commands while it is closed.
TEST(AtspiMenuReader, TheMenuButtonWithTheMostCommandsStandsInForTheMenuBar)
{
    registerCacheItemTypes();
    using namespace AtspiRole;
    QList<ItemWithChildren> items{
        item(1, 0, frame, "Letter", {2, 4}),
        item(2, 1, panel, "", {3, 10}),
        item(3, 2, toggleButton, "Menu"),
        item(4, 3, panel, "", {5, 6, 7, 8, 9, 3}), // and a link back up
        item(5, 4, pushButton, "New Window"),
        item(6, 4, pushButton, "Save As…"),
        item(7, 4, checkBox, "Word Wrap"),
        item(8, 4, separator, ""),
        item(9, 4, pushButton, "  "), // an icon without a name is no command
        item(10, 2, toggleButton, "Documents", {11}),
        item(11, 10, pushButton, "Close All"),
    };
    items[6].states = {1u << AtspiState::visible, 0}; // insensitive: listed, not enabled
    DBusRoundTrip wire;
    AtspiBus bus;
    AtspiMenuReader reader(bus);
    ASSERT_TRUE(feed(reader, wire, items));
    const QList<AtspiRef> windows{AtspiRef{":1.7", "/o/1"}};
    EXPECT_FALSE(reader.findMenuBarInCache(windows));
    const std::optional<AtspiRef> button = reader.findMenuButtonInCache(windows);
    ASSERT_EQ(button, (AtspiRef{":1.7", "/o/3"}));
    const AccessibilityElementRef menu = reader.makeButtonMenu(*button, 1);
    EXPECT_EQ(titles(menu), (QStringList{"/Menu/New Window", "/Menu/Save As…", "/Menu/Word Wrap"}));
    const auto* entry = dynamic_cast<const AtspiElement*>(dynamic_cast<const AtspiElement*>(menu.get())->children[0].get());
    const auto* wrap = dynamic_cast<const AtspiElement*>(
        dynamic_cast<const AtspiElement*>(entry->children[0].get())->children[2].get());
    EXPECT_FALSE(wrap->enabled);
}

} // namespace
