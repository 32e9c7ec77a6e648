// The panel in a GNOME Shell session (headless, Wayland, no X server): opened
// by the toggle command, and by the shortcut the welcome sets up among
// GNOME's own custom shortcuts.
#include "session.h"

namespace {

using namespace e2e;
using namespace e2e::session;

const QString kMediaKeys = QStringLiteral("org.gnome.settings-daemon.plugins.media-keys");
const QString kCustom = QStringLiteral("org.gnome.settings-daemon.plugins.media-keys.custom-keybinding:");
const QString kUsersPath = QStringLiteral("/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/custom0/");
const QString kKestrioPath = QStringLiteral("/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/kestrio/");

QString gsettings(const QStringList& arguments)
{
    return run("gsettings", arguments).out.trimmed();
}

// One custom shortcut as GNOME's settings hold it: name, command, binding.
QStringList customShortcut(const QString& path)
{
    QStringList entry;
    for (const char* key : {"name", "command", "binding"})
        entry << gsettings({"get", kCustom + path, key});
    return entry;
}

QString shot(const QString& name)
{
    QDir().mkpath(QStringLiteral(ARTIFACTS_DIR));
    const QString path = QStringLiteral(ARTIFACTS_DIR "/%1.png").arg(name);
    QThread::msleep(250); // let the last frame reach the screen
    if (look({"screenshot", path}).exitCode == 0)
        std::cout << "screenshot: " << path.toStdString() << std::endl;
    return path;
}

using Gnome = Desktop;

TEST_F(Gnome, TheToggleOpensThePanelOverTheAppTheUserWasTypingIn)
{
    startKestrio();
    toggleSaveAsAndEscape([] { ASSERT_EQ(run(kestrioProgram(), {"--toggle"}).exitCode, 0); });
}

TEST_F(Gnome, TheWelcomeSetsUpAGnomeShortcutThatOpensThePanelAndRemoveTakesOnlyItsOwn)
{
    // A shortcut of the user's own, there before Kestrio.
    ASSERT_EQ(run("gsettings", {"set", kMediaKeys, "custom-keybindings", "['" + kUsersPath + "']"}).exitCode, 0);
    run("gsettings", {"set", kCustom + kUsersPath, "name", "Terminal"});
    run("gsettings", {"set", kCustom + kUsersPath, "command", "xterm"});
    run("gsettings", {"set", kCustom + kUsersPath, "binding", "<Control><Alt>t"});
    const QStringList users = customShortcut(kUsersPath);

    // A first start: the welcome (told of the missing tray already, so that it
    // does not come back a moment later to say so).
    startKestrio(R"({"noTrayNoticeShown": true})");
    ASSERT_TRUE(eventually([&] { return windowsTitled("Welcome to Kestrio") == 1; }));
    // Once it knows that accessibility is on, as the user sees it.
    ASSERT_TRUE(eventually([&] {
        const QStringList shown = texts(kestrioPid_);
        return shown.contains("Set Up Shortcut") && shown.contains("Get Started");
    }));
    shot("gnome-welcome-before");
    ASSERT_TRUE(press(kestrioPid_, "Set Up Shortcut"));
    ASSERT_TRUE(eventually([&] { return texts(kestrioPid_).contains("Ctrl+Alt+Space opens Kestrio"); }));
    shot("gnome-welcome-after");

    // Kestrio's entry in GNOME's own list, beside the user's, which is as it was.
    EXPECT_EQ(gsettings({"get", kMediaKeys, "custom-keybindings"}), "['" + kUsersPath + "', '" + kKestrioPath + "']");
    const QStringList kestrios = customShortcut(kKestrioPath);
    EXPECT_EQ(kestrios.value(0), "'Kestrio'");
    EXPECT_TRUE(kestrios.value(1).contains(" --toggle")) << kestrios.value(1).toStdString();
    EXPECT_EQ(kestrios.value(2), "'<Control><Alt>space'");
    EXPECT_EQ(customShortcut(kUsersPath), users);

    ASSERT_TRUE(press(kestrioPid_, "Get Started"));
    ASSERT_TRUE(eventually([&] { return windowsTitled("Welcome to Kestrio") == 0; }));
    ASSERT_TRUE(eventually([&] { return activeWindowPid() == mousepadPid_; }));

    // GNOME runs the toggle on the keys.
    ASSERT_TRUE(keys({"chord ctrl+alt+space"}));
    ASSERT_TRUE(eventually([&] { return panelIsActive(); }));
    ASSERT_TRUE(keys({"type save as"}));
    ASSERT_TRUE(eventually([&] { return panelFinds("save as", "Save As..."); }));
    ASSERT_TRUE(keys({"key Escape"}));
    ASSERT_TRUE(eventually([&] { return !panelIsOpen(); }));

    // A second start opens the settings, where Remove takes Kestrio's entry away.
    ASSERT_EQ(run(kestrioProgram(), {}).exitCode, 0);
    ASSERT_TRUE(eventually([&] { return texts(kestrioPid_).contains("Remove"); }))
        << texts(kestrioPid_).join(u'|').toStdString();
    ASSERT_TRUE(press(kestrioPid_, "Remove"));
    EXPECT_TRUE(eventually([&] { return gsettings({"get", kMediaKeys, "custom-keybindings"}) == "['" + kUsersPath + "']"; }));
    EXPECT_TRUE(eventually([&] { return customShortcut(kKestrioPath) == QStringList{"''", "''", "''"}; }));
    EXPECT_EQ(customShortcut(kUsersPath), users);
}

} // namespace
