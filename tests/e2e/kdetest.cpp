// The panel in a KDE Plasma session (KWin, headless, Wayland, no X server):
// opened by the toggle command, and by the Plasma shortcut the welcome binds.
#include "session.h"

namespace {

using namespace e2e;
using namespace e2e::session;

const QString kCtrlAltSpace = QString::number(0x0C000020); // Plasma's number for Ctrl+Alt+Space
const QString kKRunner = QStringLiteral("['org.kde.krunner.desktop', '_launch', 'KRunner', 'KRunner']");

ProcessResult shortcutService(const QString& method, const QStringList& arguments)
{
    return run("gdbus", QStringList{"call", "--session", "--dest", "org.kde.kglobalaccel", "--object-path",
                                    "/kglobalaccel", "--method", "org.kde.KGlobalAccel." + method}
                            + arguments);
}

using Kde = Desktop;

TEST_F(Kde, TheToggleOpensThePanelOverTheAppTheUserWasTypingIn)
{
    startKestrio();
    toggleSaveAsAndEscape([] { ASSERT_EQ(run(kestrioProgram(), {"--toggle"}).exitCode, 0); });
}

TEST_F(Kde, TheWelcomeBindsAPlasmaShortcutThatOpensThePanel)
{
    // Another program holds Ctrl+Alt+Space.
    ASSERT_EQ(shortcutService("doRegister", {kKRunner}).exitCode, 0);
    ASSERT_EQ(shortcutService("setShortcut", {kKRunner, "[" + kCtrlAltSpace + "]", "6"}).out.trimmed(),
              "([" + kCtrlAltSpace + "],)");

    // A first start: the welcome (told of the missing tray already, so that it
    // does not come back a moment later to say so).
    startKestrio(R"({"noTrayNoticeShown": true})");
    ASSERT_TRUE(eventually([&] { return texts(kestrioPid_).contains("Set Up Shortcut"); }));
    ASSERT_TRUE(press(kestrioPid_, "Set Up Shortcut"));
    ASSERT_TRUE(eventually([&] {
        return texts(kestrioPid_).contains("Ctrl+Alt+Space is already the shortcut for “KRunner” (KRunner). "
                                           "Record another shortcut in Kestrio's settings.");
    }));
    EXPECT_EQ(shortcutService("shortcut", {kKRunner}).out.trimmed(), "([" + kCtrlAltSpace + "],)"); // its keys stay

    // Once it lets go of them, Plasma grants them to Kestrio.
    ASSERT_EQ(shortcutService("setShortcut", {kKRunner, "@ai []", "6"}).exitCode, 0);
    ASSERT_TRUE(press(kestrioPid_, "Set Up Shortcut"));
    ASSERT_TRUE(eventually([&] { return texts(kestrioPid_).contains("Ctrl+Alt+Space opens Kestrio"); }));

    ASSERT_TRUE(eventually([&] { return press(kestrioPid_, "Get Started"); })); // once it knows accessibility is on
    ASSERT_TRUE(eventually([&] { return windowsTitled("Welcome to Kestrio") == 0; }));
    ASSERT_TRUE(eventually([&] { return activeWindowPid() == mousepadPid_; }));

    // The keys reach Kestrio from Plasma.
    ASSERT_TRUE(keys({"chord ctrl+alt+space"}));
    ASSERT_TRUE(eventually([&] { return panelIsActive(); }));
    ASSERT_TRUE(keys({"type save as"}));
    EXPECT_TRUE(eventually([&] { return panelFinds("save as", "Save As..."); }));
}

} // namespace
