#include "desktop.h"

#include <gtest/gtest.h>

namespace {

using namespace e2e;

QString window(const QStringList& searchArguments)
{
    return firstWindow(QStringList{"--onlyvisible"} + searchArguments);
}


// The session starts as a user's does, with the desktop's accessibility
// switch off. Applications already running are there before Kestrio is.
TEST(AccessibilitySwitch, TheWelcomesButtonTurnsItOnAndRunningApplicationsBecomeSearchable)
{
    ASSERT_FALSE(accessibilitySwitch());
    Applications apps;
    ASSERT_EQ(apps.start("featherpad", {}, "FeatherPad", "File → Save As"), "FeatherPad"); // Qt 5
    ASSERT_EQ(apps.start("mousepad", {}, "mousepad", "File → Save As"), "mousepad");       // GTK 3
    const QString featherpadPid = pidOf("FeatherPad");

    QProcess kestrio;
    kestrio.setProcessChannelMode(QProcess::ForwardedChannels);
    kestrio.start(QStringLiteral(KESTRIO_PATH));
    ASSERT_TRUE(kestrio.waitForStarted());
    const QString kestrioPid = QString::number(kestrio.processId());
    QString welcome;
    ASSERT_TRUE(eventually([&] { return !(welcome = window({"--name", "Welcome to Kestrio"})).isEmpty(); }));
    screenshot("switch-off-welcome");

    // Not trusted yet: the gesture over an application brings the welcome
    // forward instead of a panel.
    run("xdotool", {"windowactivate", "--sync", window({"--class", "featherpad"})});
    ASSERT_TRUE(eventually([&] { return activePid() == featherpadPid; }));
    QThread::msleep(300);
    run("xdotool", doubleTap("Control_L"));
    QThread::msleep(1500);
    EXPECT_EQ(window({"--name", "^Kestrio$"}), QString()); // no panel
    EXPECT_FALSE(accessibilitySwitch());

    // The welcome's own button (its default) is the user's act.
    run("xdotool", {"windowactivate", "--sync", welcome});
    run("xdotool", {"key", "Return"});
    ASSERT_TRUE(eventually([] { return accessibilitySwitch(); }));
    QThread::msleep(1500); // the welcome looks again each second
    screenshot("switch-on-welcome");
    run("xdotool", {"windowactivate", "--sync", welcome});
    run("xdotool", {"key", "alt+F4"});
    ASSERT_TRUE(eventually([&] { return window({"--name", "Welcome to Kestrio"}).isEmpty(); }));

    // FeatherPad, running since before the switch, is searched and its command run.
    run("xdotool", {"windowactivate", "--sync", window({"--class", "featherpad"})});
    ASSERT_TRUE(eventually([&] { return activePid() == featherpadPid; }));
    QThread::msleep(300);
    run("xdotool", doubleTap("Control_L"));
    ASSERT_TRUE(eventually([&] { return activePid() == kestrioPid; }));
    run("xdotool", {"type", "--delay", "60", "save as"});
    ASSERT_TRUE(eventually([&] {
        run("xdotool", {"key", "Return"});
        return eventually([] { return windowsNamed("Save as") + windowsNamed("Save As") > 0; }, 2000);
    }));
    screenshot("switch-featherpad-save-as");
    run("xdotool", {"key", "Escape"});

    kestrio.terminate();
    kestrio.waitForFinished();
}

// Qt 6.4 applications read the switch only when they start: one started
// before it was on shows its menus once restarted (what the README says).
TEST(AccessibilitySwitch, AQt6ApplicationStartedBeforeNeedsARestart)
{
    ASSERT_FALSE(accessibilitySwitch());
    auto before = std::make_unique<QProcess>();
    before->start(QStringLiteral(TWO_WINDOWS_PATH));
    ASSERT_TRUE(before->waitForStarted());
    ASSERT_TRUE(eventually([] { return !window({"--name", "Letter"}).isEmpty(); }));
    ASSERT_TRUE(setAccessibilitySwitch(true));
    QThread::msleep(2000);
    EXPECT_EQ(pidOf("kestrio-two-windows"), QString());
    before->terminate();
    before->waitForFinished();

    Applications apps;
    EXPECT_EQ(apps.start(TWO_WINDOWS_PATH, {}, "kestrio-two-windows", "Text → Bold"), "kestrio-two-windows");
}

} // namespace
