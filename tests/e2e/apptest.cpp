#include "desktop.h"

#include <QDir>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <iostream>

namespace {

using namespace e2e;

TEST(Kestrio, OneSearchFromTheHotkeyToTheCommand)
{
    Applications apps;
    ASSERT_EQ(apps.start("mousepad", {}, "mousepad", "File → Save As"), "mousepad");
    const QString mousepadPid = pidOf("mousepad");

    QProcess kestrio;
    kestrio.setProcessChannelMode(QProcess::ForwardedChannels);
    kestrio.start(kestrioProgram());
    ASSERT_TRUE(kestrio.waitForStarted());

    // A fresh settings folder: the welcome comes first.
    QString welcome;
    ASSERT_TRUE(eventually([&] { return !(welcome = firstWindow({"--onlyvisible", "--name", "Welcome to Kestrio"})).isEmpty(); }));
    screenshot("app-onboarding");
    run("xdotool", {"windowactivate", "--sync", welcome});
    run("xdotool", {"key", "alt+F4"});
    ASSERT_TRUE(eventually([&] { return firstWindow({"--onlyvisible", "--name", "Welcome to Kestrio"}).isEmpty(); }));

    // Back to mousepad, then double-tap Ctrl.
    run("xdotool", {"windowactivate", "--sync", firstWindow({"--onlyvisible", "--class", "mousepad"})});
    ASSERT_TRUE(eventually([&] { return activePid() == mousepadPid; }));
    QThread::msleep(300); // Kestrio hears of the activation through the root window
    run("xdotool", doubleTap("Control_L"));
    const QString kestrioPid = QString::number(kestrio.processId());
    ASSERT_TRUE(eventually([&] { return activePid() == kestrioPid; })); // the panel has the keyboard

    run("xdotool", {"type", "--delay", "60", "save as"});
    screenshot("app-panel");
    // Return runs the first result; should the reading still be under way, it
    // finds nothing yet and the panel stays, so it is pressed again.
    ASSERT_TRUE(eventually([&] {
        run("xdotool", {"key", "Return"});
        return eventually([] { return windowsNamed("Save As") > 0; }, 2000);
    }));
    screenshot("app-mousepad-save-as");
    EXPECT_NE(activePid(), kestrioPid);
    EXPECT_TRUE(eventually([] { return usageCount("org.xfce.mousepad", "File → Save As...") == 1; }));
    run("xdotool", {"key", "Escape"}); // close mousepad's dialog
    EXPECT_TRUE(eventually([] { return windowsNamed("Save As") == 0; }));

    // Quit from the tray: click the icon, choose the last row.
    QString tray;
    ASSERT_TRUE(eventually([&] { return !(tray = firstWindow({"--classname", "panel"})).isEmpty(); }));
    const QString geometry = run("xdotool", {"getwindowgeometry", tray}).out;
    const auto position = QRegularExpression(R"(Position: (\d+),(\d+))").match(geometry);
    const auto size = QRegularExpression(R"(Geometry: (\d+)x(\d+))").match(geometry);
    const int x = position.captured(1).toInt() + size.captured(1).toInt() / 2;
    const int y = position.captured(2).toInt() + size.captured(2).toInt() / 2;
    ASSERT_TRUE(eventually([&] {
        run("xdotool", {"mousemove", QString::number(x), QString::number(y), "click", "1"});
        QThread::msleep(400);
        screenshot("app-tray-menu");
        run("xdotool", {"key", "Up", "Return"});
        return kestrio.waitForFinished(2000);
    }));
    EXPECT_EQ(kestrio.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(kestrio.exitCode(), 0);
}

} // namespace
