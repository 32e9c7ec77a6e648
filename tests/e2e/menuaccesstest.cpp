#include "desktop.h"

#include <QJsonArray>

#include <gtest/gtest.h>

namespace {

using namespace e2e;

const QString kMousepadBundle = QStringLiteral("org.xfce.mousepad");

class MenuAccess : public testing::Test {
protected:
    Applications apps;

    void startMousepad() { ASSERT_EQ(apps.start("mousepad", {}, "mousepad", "File → Save As"), "mousepad"); }
    void startFeatherpad() { ASSERT_EQ(apps.start("featherpad", {}, "FeatherPad", "File → Save As"), "FeatherPad"); }

    static QStringList lines(const ProcessResult& r) { return r.out.split(u'\n', Qt::SkipEmptyParts); }
};

TEST_F(MenuAccess, GtkMenusWithPathsShortcutsAndStates)
{
    startMousepad();
    const QStringList menus = lines(kestrioctl({"menus", "--name", "mousepad"}));
    EXPECT_GT(menus.size(), 100);
    EXPECT_TRUE(menus.contains("File → Save As...\tCtrl+Shift+S\tenabled"));
    EXPECT_TRUE(menus.contains("Edit → Move → Line Up\tAlt+↑\tenabled"));
    EXPECT_TRUE(menus.contains("View → Fullscreen\tF11\tenabled"));
    EXPECT_TRUE(menus.contains("Edit → Undo\tCtrl+Z\tdisabled"));
    // Names come without the padding mousepad gives them; submenus are not commands.
    for (const QString& line : menus) {
        EXPECT_FALSE(line.section(u'\t', 0, 0).endsWith(u' ')) << line.toStdString();
        EXPECT_NE(line.section(u'\t', 0, 0), "File → Open Recent");
    }
}

TEST_F(MenuAccess, QtMenusWithShortcutsButNoMnemonics)
{
    startFeatherpad();
    const QStringList menus = lines(kestrioctl({"menus", "--name", "FeatherPad"}));
    EXPECT_TRUE(menus.contains("File → Save As\tCtrl+Shift+S\tenabled"));
    EXPECT_TRUE(menus.contains("File → Quit\tCtrl+Q\tenabled"));
    EXPECT_TRUE(menus.contains("Help → About\t\tenabled")); // Qt reports its mnemonic Alt+A
    EXPECT_TRUE(menus.contains("Options → Encoding → Unicode → UTF-8\t\tenabled"));
}

// A header-bar application: no menu bar; the commands of its main menu are
// those of its menu button's popover, named after the button, and press
// while the popover stays closed.
TEST_F(MenuAccess, HeaderBarCommandsComeFromTheMenuButton)
{
    ASSERT_EQ(apps.start("gedit", {"--standalone"}, "gedit", "Menu → About gedit"), "gedit");
    const QStringList menus = lines(kestrioctl({"menus", "--name", "gedit"}));
    EXPECT_TRUE(menus.contains("Menu → Save As…\t\tenabled"));
    EXPECT_TRUE(menus.contains("Menu → Preferences\t\tenabled"));
    ASSERT_EQ(windowsNamed("About gedit"), 0);
    const ProcessResult r = kestrioctl({"press", "--name", "gedit", "Menu → About gedit"});
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(eventually([] { return windowsNamed("About gedit") > 0; }));
}

// A menu bar exported on the session bus and not drawn (as under a global
// menu): read from the bus with its shortcuts and states, pressed through the
// application's actions, next to the menu button's commands.
TEST_F(MenuAccess, AMenuBarExportedOnTheSessionBusIsReadAndPressedThere)
{
    ASSERT_EQ(apps.start("/usr/bin/python3", {QStringLiteral(SOURCE_DIR "/tests/e2e/gtknotes.py")}, "gtknotes",
                         "File → Save As…"),
              "gtknotes");
    const QStringList menus = lines(kestrioctl({"menus", "--name", "gtknotes"}));
    EXPECT_EQ(menus, (QStringList{
        "File → New Note\tCtrl+N\tenabled",
        "File → Save As…\tCtrl+Shift+S\tenabled",
        "File → Print\tCtrl+P\tenabled",
        "File → Quit\tCtrl+Q\tenabled",
        "Edit → Undo\tCtrl+Z\tdisabled",
        "Edit → Wrap → Words\t\tenabled",
        "Edit → Wrap → Characters\t\tenabled",
        "Help → About Notes\t\tenabled",
        "Menu → New Window\t\tenabled",
        "Menu → Preferences\t\tenabled",
        "File → Open Recent → …\t\tempty until opened",
    }));
    for (const auto& [path, ran] : {std::pair{"File → Save As…", "ran: save-as"},
                                    std::pair{"Edit → Wrap → Characters", "ran: wrap:chars"},
                                    std::pair{"Menu → Preferences", "ran: preferences"}}) {
        const ProcessResult r = kestrioctl({"press", "--name", "gtknotes", path});
        EXPECT_EQ(r.exitCode, 0) << path << r.err.toStdString();
        EXPECT_TRUE(eventually([ran = QString(ran)] { return windowsNamed(ran) > 0; })) << ran;
    }
    EXPECT_EQ(kestrioctl({"press", "--name", "gtknotes", "Edit → Undo"}).exitCode, 2); // disabled
}

// The same program drawing its menu bar: read over accessibility, where
// "Print" names its shortcut only in its label.
TEST_F(MenuAccess, AShortcutDrawnInTheItemsLabelIsShownAndTheItemPresses)
{
    ASSERT_EQ(apps.start("/usr/bin/python3", {QStringLiteral(SOURCE_DIR "/tests/e2e/gtknotes.py"), "--drawn"}, "gtknotes",
                         "File → Print"),
              "gtknotes");
    const QStringList menus = lines(kestrioctl({"menus", "--name", "gtknotes"}));
    EXPECT_TRUE(menus.contains("File → Print\tCtrl+P\tenabled")) << menus.join(u'\n').toStdString();
    EXPECT_TRUE(menus.contains("File → Save As…\tCtrl+Shift+S\tenabled"));
    const ProcessResult r = kestrioctl({"press", "--name", "gtknotes", "File → Print"});
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(eventually([] { return windowsNamed("ran: print") > 0; }));
}

TEST_F(MenuAccess, JsonListsTheSameItems)
{
    startMousepad();
    const ProcessResult r = kestrioctl({"menus", "--name", "mousepad", "--json"});
    ASSERT_EQ(r.exitCode, 0);
    const QJsonArray items = QJsonDocument::fromJson(r.out.toUtf8()).array();
    EXPECT_EQ(items.size(), lines(kestrioctl({"menus", "--name", "mousepad"})).size());
    bool found = false;
    for (const auto& v : items) {
        const QJsonObject item = v.toObject();
        if (item.value("path") == "File → Save As...") {
            found = true;
            EXPECT_EQ(item.value("shortcut"), "Ctrl+Shift+S");
            EXPECT_EQ(item.value("menuPath").toArray().size(), 2);
            EXPECT_EQ(item.value("enabled"), true);
        }
    }
    EXPECT_TRUE(found);
}

TEST_F(MenuAccess, PressOpensTheWindowAndCountsOnce)
{
    startMousepad();
    ASSERT_EQ(windowsNamed("About"), 0);
    const ProcessResult r = kestrioctl({"press", "--name", "mousepad", "Help → About"});
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(eventually([] { return windowsNamed("About") > 0; }));
    EXPECT_EQ(usageCount(kMousepadBundle, "Help → About"), 1);
}

TEST_F(MenuAccess, DisabledOrMissingItemsRecordNothing)
{
    startMousepad();
    const ProcessResult disabled = kestrioctl({"press", "--name", "mousepad", "Edit → Undo"});
    EXPECT_EQ(disabled.exitCode, 2);
    EXPECT_TRUE(disabled.err.contains("disabled"));
    const ProcessResult missing = kestrioctl({"press", "--name", "mousepad", "File → No Such Item"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.err.contains("No menu item"));
    EXPECT_EQ(usageCount(kMousepadBundle, "Edit → Undo"), 0);
}

TEST_F(MenuAccess, ModalDialogDoesNotHoldThePressOrLaterReadings)
{
    startFeatherpad();
    startMousepad();
    // Both open modal dialogs that answer only when closed.
    EXPECT_EQ(kestrioctl({"press", "--name", "FeatherPad", "Help → About"}).exitCode, 0);
    EXPECT_EQ(kestrioctl({"press", "--name", "mousepad", "File → Save As..."}).exitCode, 0);
    EXPECT_TRUE(eventually([] { return windowsNamed("About") > 0 && windowsNamed("Save As") > 0; }));
    EXPECT_TRUE(lines(kestrioctl({"menus", "--name", "mousepad"})).contains("File → Save As...\tCtrl+Shift+S\tenabled"));
    EXPECT_EQ(usageCount("FeatherPad", "Help → About"), 1);
}

TEST_F(MenuAccess, ActiveApplicationIsTheFocusedWindow)
{
    startMousepad();
    startFeatherpad();
    const ProcessResult id = run("xdotool", {"search", "--onlyvisible", "--class", "mousepad"});
    const QString window = id.out.split(u'\n', Qt::SkipEmptyParts).value(0);
    ASSERT_FALSE(window.isEmpty());
    run("xdotool", {"windowactivate", "--sync", window});
    EXPECT_TRUE(eventually([] {
        return kestrioctl({"menus", "--active"}).out.contains("File → Save As...\tCtrl+Shift+S");
    }));
}

TEST_F(MenuAccess, HungApplicationGivesAnEmptyListNotAFrozenReader)
{
    startMousepad();
    const QString pid = pidOf("mousepad");
    ASSERT_FALSE(pid.isEmpty());
    run("kill", {"-STOP", pid});
    const ProcessResult r = kestrioctl({"menus", "--pid", pid});
    run("kill", {"-CONT", pid});
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.isEmpty());
}

} // namespace

namespace {

// One process with two windows whose menus differ: the menus are those of the
// window the user was in, also when neither window is active any more (the
// panel has the focus by the time the menus are read).
TEST_F(MenuAccess, TheMenusOfTheWindowTheUserWasIn)
{
    ASSERT_EQ(apps.start(QStringLiteral(TWO_WINDOWS_PATH), {}, "kestrio-two-windows", "Text → Bold"),
              "kestrio-two-windows");
    startMousepad();
    auto windowNamed = [](const QString& title) {
        return run("xdotool", {"search", "--onlyvisible", "--name", QString("^%1$").arg(title)})
            .out.split(u'\n', Qt::SkipEmptyParts).value(0);
    };
    // While the user is in it.
    run("xdotool", {"windowactivate", "--sync", windowNamed("Sheet")});
    EXPECT_TRUE(lines(kestrioctl({"menus", "--active"})).contains("Cells → Sum\t\tenabled"));
    // After the focus went elsewhere.
    run("xdotool", {"windowactivate", "--sync", run("xdotool", {"search", "--onlyvisible", "--class", "mousepad"})
                                                    .out.split(u'\n', Qt::SkipEmptyParts).value(0)});
    for (const auto& [title, expected, other] : {std::tuple{"Letter", "Text → Bold", "Cells → Sum"},
                                                 std::tuple{"Sheet", "Cells → Sum", "Text → Bold"}}) {
        SCOPED_TRACE(title);
        const QString window = windowNamed(title);
        ASSERT_FALSE(window.isEmpty());
        const QStringList menus = lines(kestrioctl({"menus", "--window", window}));
        EXPECT_TRUE(menus.contains(QString("%1\t\tenabled").arg(expected))) << menus.join('|').toStdString();
        EXPECT_FALSE(menus.join('\n').contains(other));
    }
}

} // namespace

namespace {

// The accessibility bus goes away (its launcher ended) and comes back at a
// new address: the running program uses the new one without a restart, so an
// application started afterwards is found there.
TEST(AccessibilityBus, ARestartedBusIsUsedAgain)
{
    ReportingProcess probe(QStringLiteral(TRUST_PROBE_PATH), {});
    ASSERT_TRUE(probe.reports([](const QJsonObject& s) { return s["trusted"] == true; }));

    // Only this session's launcher (others run beside it on the machine): the
    // parent of the bus that lives in this session's runtime folder.
    const QString bus = run("pgrep", {"-f", qEnvironmentVariable("XDG_RUNTIME_DIR") + "/at-spi/bus"})
                            .out.split(u'\n', Qt::SkipEmptyParts).value(0);
    ASSERT_FALSE(bus.isEmpty());
    QFile stat(QStringLiteral("/proc/%1/stat").arg(bus));
    ASSERT_TRUE(stat.open(QIODevice::ReadOnly));
    const QString launcher = QString::fromLatin1(stat.readAll()).section(u')', -1).split(u' ', Qt::SkipEmptyParts).value(1);
    run("kill", {"-TERM", launcher, bus});
    ASSERT_TRUE(eventually([&] { return !QFileInfo::exists(QStringLiteral("/proc/") + bus); }));

    // Started now, the application registers on the bus that activation
    // brings back, at another address.
    Applications apps;
    run("dbus-send", {"--session", "--print-reply=literal", "--dest=org.a11y.Bus", "/org/a11y/bus",
                      "org.a11y.Bus.GetAddress"});
    ASSERT_EQ(apps.start("mousepad", {}, "mousepad", "File → Save As"), "mousepad");
    EXPECT_TRUE(probe.reports([](const QJsonObject& s) {
        return s["trusted"] == true && s["apps"].toArray().contains(QStringLiteral("mousepad"));
    }));
}

} // namespace
