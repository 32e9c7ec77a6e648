#include "menu/shortcuttext.h"
#include "platform/linux/exported/dbusmenulayout.h"
#include "platform/linux/exported/exportedmenureader.h"
#include "platform/linux/exported/gtkmenumodel.h"
#include "support/dbusroundtrip.h"
#include "support/exportedmenus.h"

#include <gtest/gtest.h>

namespace {

QVariantMap gtkItem(const QString& label, const QString& action = {}, const QString& accel = {})
{
    QVariantMap item{{"label", label}};
    if (!action.isEmpty())
        item.insert("action", action);
    if (!accel.isEmpty())
        item.insert("accel", accel);
    return item;
}

QVariantMap gtkLink(const char* kind, uint group, uint menu, const QString& label = {})
{
    QVariantMap item{{kind, QVariant::fromValue(GtkMenuLink{group, menu})}};
    if (!label.isEmpty())
        item.insert("label", label);
    return item;
}

bool take(GtkMenuModel& model, DBusRoundTrip& wire, const QList<GtkMenuGroup>& groups)
{
    const std::optional<QVariant> reply = wire.received(QVariant::fromValue(groups));
    return reply && reply->canConvert<QDBusArgument>() && model.take(reply->value<QDBusArgument>());
}

// Every path in a tree of exported nodes, "File/Save As…", with a mark for
// what is not plain: "[off]" disabled, "[…]" a submenu, and the shortcut.
QStringList paths(const QList<ExportedMenuNode>& nodes, const QString& above = {})
{
    QStringList out;
    for (const ExportedMenuNode& node : nodes) {
        const QString path = above.isEmpty() ? node.label : above + "/" + node.label;
        if (node.isSubmenu) {
            if (node.children.isEmpty())
                out << path + " […]";
            out += paths(node.children, path);
            continue;
        }
        QString line = path;
        if (node.key)
            line += u' ' + shortcutText(*node.key, PlatformWords::linuxDesktop().keys);
        if (!node.enabled)
            line += " [off]";
        out << line;
    }
    return out;
}

const QHash<QString, std::pair<QString, QString>> kAddresses{{"app", {":1.4", "/org/example/Notes"}},
                                                             {"win", {":1.4", "/org/example/Notes/window/1"}}};

// A menu bar as a GTK application sends it: menus spread over groups that
// arrive in two rounds, sections, mnemonics, accelerators, a parameter, and
// items GTK itself would hide or could not run.
TEST(GtkMenuModel, AMenuBarSentInGroupsBecomesCommandsThatNameTheirActions)
{
    registerExportedMenuTypes();
    DBusRoundTrip wire;
    GtkMenuModel model;
    ASSERT_TRUE(take(model, wire, {
        {0, 0, {gtkLink(":submenu", 1, 0, "_File"), gtkLink(":submenu", 2, 0, "_Edit")}},
        {1, 0, {gtkLink(":section", 1, 1), gtkLink(":section", 1, 2)}},
        {1, 1, {gtkItem("_New", "win.new", "<Primary>n"), gtkItem("Save _As…", "win.save-as", "<Primary><Shift>s")}},
        {1, 2, {gtkItem("_Quit", "app.quit", "<Primary>q")}},
    }));
    EXPECT_EQ(model.missingGroups(), QList<uint>{2});

    QVariantMap syntax = gtkItem("_C", "win.syntax");
    syntax.insert("target", "c");
    QVariantMap gone = gtkItem("Gone", "win.gone");
    gone.insert("hidden-when", "action-missing");
    QVariantMap offAndHidden = gtkItem("Redo", "win.redo");
    offAndHidden.insert("hidden-when", "action-disabled");
    ASSERT_TRUE(take(model, wire, {
        {2, 0, {gtkItem("_Undo", "win.undo", "<Primary>z"), offAndHidden, gone, gtkItem("Missing", "win.missing"),
                gtkItem("Find", "doc.find"), gtkItem("", "win.new"), gtkItem("Label only"),
                gtkLink(":submenu", 3, 0, "Synta_x"), gtkLink(":submenu", 4, 0, "Recent")}},
        {3, 0, {syntax}},
        {4, 0, {}},
    }));
    EXPECT_TRUE(model.missingGroups().isEmpty());

    const QHash<QString, GtkMenuModel::ActionState> actions{
        {"win.new", {true}}, {"win.save-as", {true}}, {"app.quit", {true}}, {"win.undo", {false}},
        {"win.redo", {false}}, {"win.syntax", {true}}};
    const QList<ExportedMenuNode> tree = model.tree(actions, kAddresses);
    EXPECT_EQ(paths(tree), (QStringList{"File/New Ctrl+N", "File/Save As… Ctrl+Shift+S", "File/Quit Ctrl+Q", "Edit/Undo Ctrl+Z [off]",
                                        "Edit/Missing [off]", "Edit/Syntax/C", "Edit/Recent […]"}));

    const ExportedPress quit = *tree[0].children[2].press;
    EXPECT_EQ(quit.kind, ExportedPress::Kind::gtkAction);
    EXPECT_EQ(std::tuple(quit.service, quit.path, quit.action), std::tuple(QString(":1.4"), QString("/org/example/Notes"), QString("quit")));
    EXPECT_FALSE(quit.target);
    const ExportedPress c = *tree[1].children[2].children[0].press;
    EXPECT_EQ(c.path, "/org/example/Notes/window/1");
    EXPECT_EQ(c.target, QVariant("c"));

    // Without the window's actions, its commands cannot be pressed: left out.
    EXPECT_EQ(paths(model.tree(actions, {{"app", kAddresses["app"]}})),
              (QStringList{"File/Quit Ctrl+Q", "Edit/Syntax […]", "Edit/Recent […]"}));
}

// What a broken or hostile application can send: menus that hold themselves,
// links to nothing, values of the wrong type, and far more items than any
// menu has. The tree stays finite and bounded.
TEST(GtkMenuModel, LoopsDanglingLinksAndFloodsStayBounded)
{
    registerExportedMenuTypes();
    DBusRoundTrip wire;
    GtkMenuModel model;
    QList<QVariantMap> flood;
    for (int i = 0; i < 30000; ++i)
        flood.append(gtkItem(QStringLiteral("Item %1").arg(i), "app.run"));
    QVariantMap wrongTypes{{"label", 42}, {"action", QVariant::fromValue(QStringList{"app.run"})},
                           {":submenu", "not a link"}};
    ASSERT_TRUE(take(model, wire, {
        {0, 0, {gtkLink(":submenu", 0, 0, "Self"), gtkLink(":submenu", 1, 0, "Loop"), gtkLink(":submenu", 9, 9, "Nowhere"),
                gtkLink(":section", 0, 0), wrongTypes, gtkLink(":submenu", 2, 0, "Flood")}},
        {1, 0, {gtkLink(":section", 1, 1), gtkItem("Run", "app.run")}},
        {1, 1, {gtkLink(":submenu", 1, 0, "Back"), gtkLink(":section", 1, 0)}},
        {2, 0, flood},
    }));
    EXPECT_EQ(model.missingGroups(), QList<uint>{9});
    const QList<ExportedMenuNode> tree = model.tree({{"app.run", {true}}}, kAddresses);
    int deepest = 0;
    const int count = countNodes(tree, 0, deepest);
    EXPECT_LE(count, 20001);
    EXPECT_LE(deepest, 18);
    ASSERT_EQ(tree.size(), 4);
    EXPECT_EQ(tree[0].label, "Self");
    EXPECT_TRUE(tree[0].children.isEmpty());
    EXPECT_EQ(paths({tree[1]}), (QStringList{"Loop/Back […]", "Loop/Run"}));
    EXPECT_EQ(tree[2].label, "Nowhere");

    // Not a reply to Start: refused.
    GtkMenuModel other;
    const std::optional<QVariant> notMenus = wire.received(QVariant::fromValue(GtkMenuLink{1, 2}));
    ASSERT_TRUE(notMenus && notMenus->canConvert<QDBusArgument>());
    EXPECT_FALSE(other.take(notMenus->value<QDBusArgument>()));
}

// Menus linked from many places: fifteen menus, each holding the next as
// ten sections and one item of its own. Taken once per reading, each gives its
// item once, however many links lead to it; sections and unlabelled entries
// are charged like any other, so the reading ends at once.
TEST(GtkMenuModel, AMenuLinkedFromManyPlacesIsTakenOnce)
{
    GtkMenuModel model;
    GtkMenuModel::Item unlabelled;
    unlabelled.action = "app.run";
    model.take(0, 0, {[] { GtkMenuModel::Item top; top.label = "Top"; top.submenu = std::pair{1u, 0u}; return top; }()});
    for (uint m = 1; m <= 15; ++m) {
        QList<GtkMenuModel::Item> items;
        for (int s = 0; s < 10 && m < 15; ++s) {
            GtkMenuModel::Item section;
            section.section = std::pair{m + 1, 0u};
            items.append(section);
            items.append(unlabelled);
        }
        GtkMenuModel::Item own;
        own.label = QStringLiteral("Item %1").arg(m);
        own.action = "app.run";
        items.append(own);
        model.take(m, 0, items);
    }
    const QList<ExportedMenuNode> tree = model.tree({{"app.run", {true}}}, kAddresses);
    QStringList expected;
    for (int m = 15; m >= 1; --m)
        expected << QStringLiteral("Top/Item %1").arg(m);
    EXPECT_EQ(paths(tree), expected);
}

DbusmenuItem dbusmenuItem(int id, const QString& label, QVariantMap more = {}, QList<DbusmenuItem> children = {})
{
    more.insert("label", label);
    return {id, more, children};
}

std::optional<QList<ExportedMenuNode>> readLayout(DBusRoundTrip& wire, const DbusmenuItem& root)
{
    const std::optional<QVariant> reply = wire.received(QVariant::fromValue(root));
    if (!reply || !reply->canConvert<QDBusArgument>())
        return std::nullopt;
    return DbusmenuLayout::read(reply->value<QDBusArgument>(), ":1.9", "/MenuBar/2");
}

// A layout as Qt's global menu sends it.
TEST(DbusmenuLayout, ALayoutBecomesMenusOfClickableItems)
{
    registerExportedMenuTypes();
    DBusRoundTrip wire;
    const QVariantMap submenu{{"children-display", "submenu"}};
    const auto shortcut = [](QList<QStringList> chords) { return QVariantMap{{"shortcut", QVariant::fromValue(chords)}}; };
    const DbusmenuItem root{0, {}, {
        dbusmenuItem(1, "_File", submenu, {
            dbusmenuItem(2, "_New", shortcut({{"Control", "n"}})),
            {3, {{"type", "separator"}}, {}},
            dbusmenuItem(4, "Open _Recent", submenu),
            dbusmenuItem(5, "_Quit", {{"enabled", false}}),
        }),
        dbusmenuItem(6, "_Edit", submenu, {
            dbusmenuItem(7, "Hidden", {{"visible", false}}),
            dbusmenuItem(8, "Find _Next", shortcut({{"Control", "Shift", "g"}, {"Control", "x"}})),
            dbusmenuItem(9, "Delete", shortcut({{"Delete"}})),
        }),
    }};
    const auto tree = readLayout(wire, root);
    ASSERT_TRUE(tree);
    EXPECT_EQ(paths(*tree), (QStringList{"File/New Ctrl+N", "File/Open Recent […]", "File/Quit [off]",
                                         "Edit/Find Next Ctrl+Shift+G", "Edit/Delete Del"}));
    const ExportedPress next = *(*tree)[1].children[0].press;
    EXPECT_EQ(next.kind, ExportedPress::Kind::dbusmenuClick);
    EXPECT_EQ(std::tuple(next.service, next.path, next.id), std::tuple(QString(":1.9"), QString("/MenuBar/2"), 8));
}

TEST(DbusmenuLayout, RepeatedIdsDeepNestingAndWrongTypesStayBounded)
{
    registerExportedMenuTypes();
    DBusRoundTrip wire;
    // As deep as the wire carries (it limits nesting to 64 containers, three per level).
    DbusmenuItem deep = dbusmenuItem(1000, "Bottom");
    for (int i = 999; i > 980; --i)
        deep = dbusmenuItem(i, QStringLiteral("Level %1").arg(i), {}, {deep});
    const DbusmenuItem root{0, {}, {
        dbusmenuItem(1, "One", {}, {dbusmenuItem(2, "Twice"), dbusmenuItem(2, "Twice"), dbusmenuItem(0, "Root again")}),
        {3, {{"label", 7}, {"visible", "no"}}, {}},
        {4, {{"label", "Odd types"}, {"enabled", "yes"}, {"shortcut", "Ctrl+S"}}, {}},
        deep,
    }};
    const auto tree = readLayout(wire, root);
    ASSERT_TRUE(tree);
    ASSERT_GE(tree->size(), 2);
    EXPECT_EQ(paths({(*tree)[0]}), QStringList{"One/Twice"});
    EXPECT_EQ(paths({(*tree)[1]}), QStringList{"Odd types"}); // a wrong type counts as the default
    int deepest = 0;
    countNodes(*tree, 0, deepest);
    EXPECT_GE(deepest, 10);
    EXPECT_LE(deepest, 17);

    // Not a layout: refused.
    const std::optional<QVariant> other = wire.received(QVariant::fromValue(GtkMenuLink{1, 2}));
    ASSERT_TRUE(other && other->canConvert<QDBusArgument>());
    EXPECT_FALSE(DbusmenuLayout::read(other->value<QDBusArgument>(), ":1.9", "/MenuBar/2"));
}

TEST(ExportedMenuReader, ApplicationIdsBecomeGtkObjectPaths)
{
    const std::pair<const char*, const char*> table[] = {
        {"org.gnome.TextEditor", "/org/gnome/TextEditor"},
        {"org.xfce.mousepad", "/org/xfce/mousepad"},
        {"org.example.my-app", "/org/example/my_app"},
        {"notanid", ""},
        {"org..double", ""},
        {"org.example.with space", ""},
        {"org.example.", ""},
    };
    for (const auto& [id, path] : table)
        EXPECT_EQ(ExportedMenuReader::gtkApplicationPath(id), QString(path)) << id;
    EXPECT_EQ(ExportedMenuReader::childNodes(
                  R"(<node><interface name="org.gtk.Actions"/><node name="menubar"/><node name="1"/><node name="../x"/></node>)"),
              (QStringList{"menubar", "1"}));
}

} // namespace
