#include "platform/linux/atspi/atspibusobjects.h"
#include "platform/linux/atspi/atspimenuhandle.h"
#include "menu/shortcuttext.h"
#include "platform/linux/atspi/atspimenubuilder.h"
#include "platform/linux/atspi/atspimenureader.h"
#include "support/atspicacheitems.h"
#include "support/atspiobjecttable.h"
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

// Each leaf's path; with `keys`, followed by its shortcut.
QStringList titles(const QList<MenuNode>& nodes, bool keys = false, const QString& path = {})
{
    QStringList out;
    for (const MenuNode& node : nodes) {
        const QString here = path + "/" + node.title;
        if (node.children.isEmpty()) {
            QString key;
            if (keys && node.shortcut)
                key = u' ' + shortcutText(*node.shortcut, PlatformWords::linuxDesktop().keys);
            out << here + key;
        }
        out += titles(node.children, keys, here);
    }
    return out;
}

QStringList titles(const std::optional<MenuTree>& tree, bool keys = false)
{
    return tree ? titles(tree->menus, keys) : QStringList{};
}

// Feeds `items` to the reader as a bulk-cache reply that came over D-Bus.
bool feed(AtspiMenuBuilder& reader, DBusRoundTrip& wire, const QList<ItemWithChildren>& items)
{
    const std::optional<QVariant> reply = wire.received(QVariant::fromValue(items));
    if (!reply || !reply->canConvert<QDBusArgument>())
        return false;
    const auto taken = AtspiBusObjects::readCacheItems(reply->value<QDBusArgument>());
    if (taken)
        reader.takeCacheItems(*taken);
    return taken.has_value();
}

// A bulk-cache reply as GTK sends it, with the links a broken or hostile
// application could add: an item listed in two menus, a menu that holds
// itself, an object that is its own parent.
TEST(AtspiMenuBuilder, ABulkCacheReplyBecomesATreeWithEveryObjectOnce)
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
    AtspiMenuBuilder reader;
    ASSERT_TRUE(feed(reader, wire, items));
    EXPECT_EQ(reader.nodes().size(), 7);
    const std::optional<AtspiRef> bar = reader.findMenuBarInCache({AtspiRef{":1.7", "/o/1"}});
    ASSERT_EQ(bar, (AtspiRef{":1.7", "/o/2"}));
    EXPECT_EQ(titles(reader.makeMenuBar(*bar)), (QStringList{"/File/Open", "/File/Save", "/Edit/Undo"}));

    // Not a cache reply at all: refused, nothing taken.
    const std::optional<QVariant> other = wire.received(QVariant::fromValue(QList<CacheRef>{object(1), object(2)}));
    ASSERT_TRUE(other && other->canConvert<QDBusArgument>());
    EXPECT_FALSE(AtspiBusObjects::readCacheItems(other->value<QDBusArgument>()));
}

// An item not marked visible is one the application hides, unless no item of
// the bar is marked (LibreOffice asked by any client while it started).
TEST(AtspiMenuBuilder, InvisibleItemsAreLeftOutOnlyWhereSomeItemIsVisible)
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
        AtspiMenuBuilder reader;
        ASSERT_TRUE(feed(reader, wire, items));
        const AtspiRef bar{":1.7", "/o/2"};
        reader.settleVisibility(bar);
        EXPECT_EQ(titles(reader.makeMenuBar(bar)), c.listed);
    }
}

// Items whose key binding names no accelerator but whose text shows one:
// after a tab in the name, or in a label of the item's own.
TEST(AtspiMenuBuilder, ShortcutsDrawnInTheItemsTextAreRead)
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
    AtspiMenuBuilder reader;
    ASSERT_TRUE(feed(reader, wire, items));
    const auto ref = [](int id) { return AtspiRef{":1.7", QStringLiteral("/o/%1").arg(id)}; };
    reader.nodes()[ref(4)].keyBinding = "o;<Alt>f:o;";
    reader.nodes()[ref(5)].keyBinding = "s;<Alt>f:s;";
    reader.nodes()[ref(7)].keyBinding = "p;<Alt>f:p;<Primary>p";
    reader.nodes()[ref(21)].keyBinding = "<Alt>a"; // a button's mnemonic
    reader.nodes()[ref(22)].keyBinding = "<Alt>f";
    EXPECT_EQ(titles(reader.makeMenuBar(ref(2)), true),
              (QStringList{"/File/Open… Ctrl+O", "/File/Save Ctrl+S", "/File/Print Ctrl+P", "/File/Write"}));
    EXPECT_EQ(titles(reader.makeButtonMenu(ref(20)), true), (QStringList{"/Menu/Save As…", "/Menu/Find… Ctrl+F"}));
}

// A header-bar window as GTK 3 shows it: no menu bar; the popover of the menu
// button is among the window's own children, names the button as its parent,
// and holds its commands while it is closed.
TEST(AtspiMenuBuilder, TheMenuButtonWithTheMostCommandsStandsInForTheMenuBar)
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
    AtspiMenuBuilder reader;
    ASSERT_TRUE(feed(reader, wire, items));
    const QList<AtspiRef> windows{AtspiRef{":1.7", "/o/1"}};
    EXPECT_FALSE(reader.findMenuBarInCache(windows));
    const std::optional<AtspiRef> button = reader.findMenuButtonInCache(windows);
    ASSERT_EQ(button, (AtspiRef{":1.7", "/o/3"}));
    const MenuTree menu = reader.makeButtonMenu(*button);
    EXPECT_EQ(titles(menu), (QStringList{"/Menu/New Window", "/Menu/Save As…", "/Menu/Word Wrap"}));
    const MenuNode& wrap = menu.menus.value(0).children.value(2);
    EXPECT_EQ(wrap.kind, MenuNode::Kind::check);
    EXPECT_FALSE(wrap.enabled);
    ASSERT_TRUE(dynamic_cast<const AtspiMenuHandle*>(wrap.handle.get()));
    EXPECT_EQ(dynamic_cast<const AtspiMenuHandle*>(wrap.handle.get())->ref, (AtspiRef{":1.7", "/o/7"}));
}

// An application as the reader meets it when it has no bulk cache (Qt, or a
// stand-in): every fact asked for object by object. Objects are named by
// their path; the application's root is "/".
struct LiveApplication {
    AtspiObjectTable table;

    static AtspiRef ref(const QString& path) { return {QStringLiteral(":1.9"), path}; }
    void add(const QString& path, uint role, const QString& name, const QStringList& children = {},
             const QString& keyBinding = {})
    {
        AtspiObjectTable::Object object;
        object.role = role;
        object.name = name;
        object.states = (1u << AtspiState::sensitive) | (1u << AtspiState::visible);
        for (const QString& child : children)
            object.children.append(ref(child));
        object.keyBinding = keyBinding;
        table.objects.insert(ref(path), object);
    }
    // A GTK-shaped window with File (Open, Save) and Help (About).
    LiveApplication()
    {
        using namespace AtspiRole;
        add("/", application, "Stand-in", {"/frame"});
        add("/frame", frame, "Letter", {"/bar"});
        add("/bar", menuBar, "", {"/file", "/help"});
        add("/file", menu, "File", {"/open", "/save"});
        add("/open", menuItem, "Open", {}, "o;<Alt>f:o;<Primary>o");
        add("/save", menuItem, "Save");
        add("/help", menu, "Help", {"/about"});
        add("/about", menuItem, "About");
    }
};

// Applications whose objects hold themselves: every object is visited once,
// the reading ends, and what it read is the menu as it would be without the
// extra links.
TEST(AtspiMenuReader, ObjectsThatHoldThemselvesAreVisitedOnce)
{
    using namespace AtspiRole;
    LiveApplication app;
    // Each menu, item and container holds itself three times besides its real children.
    for (const QString path : {"/frame", "/bar", "/file", "/open", "/help"}) {
        auto& children = app.table.objects[LiveApplication::ref(path)].children;
        const AtspiRef self = LiveApplication::ref(path);
        children = QList<AtspiRef>{self, self, self} + children;
    }
    AtspiMenuReader reader(app.table);
    const std::optional<MenuTree> bar = reader.readMenuBar(LiveApplication::ref("/"), "GTK");
    ASSERT_TRUE(bar);
    EXPECT_EQ(titles(bar), (QStringList{"/File/Open", "/File/Save", "/Help/About"}));
    EXPECT_TRUE(reader.complete());
    // Each object is asked about once: 8 objects, a handful of facts each.
    EXPECT_LE(reader.questionsAsked(), 8 * 6);
}

// A popover that links back into itself, in a window without a menu bar:
// its buttons are counted and listed once each.
TEST(AtspiMenuReader, APopoverThatHoldsItselfListsEachCommandOnce)
{
    using namespace AtspiRole;
    LiveApplication app;
    app.add("/frame", frame, "Letter", {"/header"});
    app.add("/header", panel, "", {"/header", "/menu", "/header"});
    app.add("/menu", toggleButton, "Menu", {"/popover"});
    app.add("/popover", panel, "", {"/popover", "/new", "/popover", "/close", "/menu"});
    app.add("/new", pushButton, "New Window");
    app.add("/close", pushButton, "Close");
    AtspiMenuReader reader(app.table);
    const std::optional<MenuTree> menu = reader.readMenuBar(LiveApplication::ref("/"), "GTK");
    ASSERT_TRUE(menu);
    EXPECT_FALSE(reader.foundMenuBar());
    EXPECT_EQ(titles(menu), (QStringList{"/Menu/New Window", "/Menu/Close"}));
    EXPECT_TRUE(reader.complete());
}

// Menus of tens of thousands of items, each an object of its own: each menu
// gives at most the children any menu could have, and the reading as a whole
// stops at its budget of questions, shown but marked incomplete.
TEST(AtspiMenuReader, HugeMenusAreCutAndTheReadingKeepsToItsBudget)
{
    using namespace AtspiRole;
    LiveApplication app;
    QStringList menus;
    for (int m = 0; m < 4; ++m) {
        QStringList items;
        for (int i = 0; i < 2500; ++i) {
            const QString path = QStringLiteral("/m%1/i%2").arg(m).arg(i);
            app.add(path, menuItem, QStringLiteral("Item %1").arg(i));
            items.append(path);
        }
        app.add(QStringLiteral("/m%1").arg(m), menu, QStringLiteral("Menu %1").arg(m), items);
        menus.append(QStringLiteral("/m%1").arg(m));
    }
    app.add("/bar", menuBar, "", menus);
    AtspiMenuReader reader(app.table);
    const std::optional<MenuTree> bar = reader.readMenuBar(LiveApplication::ref("/"), "GTK");
    ASSERT_TRUE(bar);
    EXPECT_FALSE(reader.complete());
    EXPECT_LE(app.table.questions, AtspiMenuReader::kMaxQuestions + 1);
    const QStringList read = titles(bar);
    EXPECT_GT(read.size(), 1000);
    EXPECT_TRUE(read.contains("/Menu 0/Item 1999"));
    EXPECT_FALSE(read.contains("/Menu 0/Item 2000")); // past what one menu may hold
}

// An application that answers, but slowly: the reading stops at its time
// budget with what it has, marked incomplete.
TEST(AtspiMenuReader, ASlowApplicationIsReadUntilTheTimeBudget)
{
    LiveApplication app;
    FakeClock clock;
    app.table.clock = &clock;
    app.table.secondsPerRound = AtspiMenuReader::kMaxSeconds / 3;
    AtspiMenuReader reader(app.table, clock);
    reader.readMenuBar(LiveApplication::ref("/"), "GTK");
    EXPECT_FALSE(reader.complete());
    EXPECT_LE(app.table.rounds, 4);

    // The same application answering at once is read whole.
    app.table.secondsPerRound = 0;
    const std::optional<MenuTree> bar = reader.readMenuBar(LiveApplication::ref("/"), "GTK");
    EXPECT_TRUE(reader.complete());
    EXPECT_EQ(titles(bar), (QStringList{"/File/Open", "/File/Save", "/Help/About"}));
}

// An application that stops answering half-way: nothing more is asked of it.
TEST(AtspiMenuReader, AnApplicationThatStopsAnsweringIsAskedNoMore)
{
    LiveApplication app;
    app.table.silentFromRound = 3;
    AtspiMenuReader reader(app.table);
    reader.readMenuBar(LiveApplication::ref("/"), "GTK");
    EXPECT_FALSE(reader.complete());
    EXPECT_EQ(app.table.rounds, 4);
}

} // namespace
