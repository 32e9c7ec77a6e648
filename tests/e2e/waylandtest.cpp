// The panel in a Wayland session (headless sway, no X server): opened by
// the toggle command a desktop shortcut would run, over a GTK application
// running natively on Wayland.
#include "sway.h"

#include <gtest/gtest.h>

namespace {

using namespace e2e;

// A user past the welcome and the no-tray notice (sway shows no tray).
constexpr const char* kSettledIn = R"({"hasLaunchedBefore": true, "noTrayNoticeShown": true})";

class Wayland : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_FALSE(qEnvironmentVariable("WAYLAND_DISPLAY").isEmpty());
        ASSERT_TRUE(qEnvironmentVariable("DISPLAY").isEmpty()); // nothing may lean on X
        ASSERT_EQ(apps_.start("mousepad", {}, "mousepad", "File → Save As"), "mousepad");
        mousepadPid_ = pidOf("mousepad");
        ASSERT_TRUE(eventually([&] { return sway::focused().pid == mousepadPid_; }));

        ASSERT_TRUE(writeSettings(kSettledIn));

        kestrio_.setProcessChannelMode(QProcess::ForwardedChannels);
        kestrio_.setProcessEnvironment(kestrioEnvironment());
        kestrio_.start(kestrioProgram());
        ASSERT_TRUE(kestrio_.waitForStarted());
        kestrioPid_ = QString::number(kestrio_.processId());
        // Ready once it answers on the session bus.
        ASSERT_TRUE(eventually([] {
            return run("dbus-send", {"--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
                                     "org.freedesktop.DBus.NameHasOwner", "string:com.brambleworks.Kestrio"})
                .out.contains("true");
        }));
    }

    void TearDown() override
    {
        kestrio_.terminate();
        if (!kestrio_.waitForFinished(5000))
            kestrio_.kill();
        kestrio_.waitForFinished();
    }

    virtual QProcessEnvironment kestrioEnvironment() const { return QProcessEnvironment::systemEnvironment(); }

    bool panelHasTheFocus()
    {
        const sway::Window window = sway::focused();
        return window.pid == kestrioPid_ && window.title == "Kestrio";
    }

    bool panelIsOpen()
    {
        for (const sway::Window& window : sway::windows()) {
            if (window.pid == kestrioPid_ && window.title == "Kestrio")
                return true;
        }
        return false;
    }

    Applications apps_;
    QProcess kestrio_;
    QString mousepadPid_;
    QString kestrioPid_;
};

TEST_F(Wayland, TheToggleCommandOpensThePanelOverTheAppAndReturnRunsTheCommand)
{
    ASSERT_EQ(run(kestrioProgram(), {"--toggle"}).exitCode, 0);
    ASSERT_TRUE(eventually([&] { return panelHasTheFocus(); }));
    // Results come from the application that was in front.
    sway::type("save as");
    screenshot("wayland-panel");
    // Return runs the first result; should the reading still be under way,
    // it finds nothing yet and the panel stays, so it is pressed again.
    ASSERT_TRUE(eventually([&] {
        sway::key("Return");
        return eventually([] { return sway::windowsTitled("Save As") > 0; }, 2000);
    }));
    screenshot("wayland-mousepad-save-as");
    EXPECT_FALSE(panelIsOpen());
    EXPECT_EQ(sway::focused().pid, mousepadPid_); // the dialog it opened has the keyboard
    // Counted under the application id the compositor knows the window by.
    QString appId;
    for (const sway::Window& window : sway::windows()) {
        if (window.pid == mousepadPid_ && window.title != "Save As")
            appId = window.appId;
    }
    ASSERT_FALSE(appId.isEmpty());
    EXPECT_TRUE(eventually([&] { return usageCount(appId, "File → Save As...") == 1; }));
}

TEST_F(Wayland, EscapeClosesWithoutRunningAndTheFocusReturnsToTheApp)
{
    const int windowsBefore = int(sway::windows().size());
    // The same toggle as a D-Bus call, the way some desktops bind keys.
    ASSERT_EQ(run("dbus-send", {"--session", "--print-reply", "--dest=com.brambleworks.Kestrio", "/com/brambleworks/Kestrio",
                                "com.brambleworks.Kestrio.Toggle", "string:"})
                  .exitCode,
              0);
    ASSERT_TRUE(eventually([&] { return panelHasTheFocus(); }));
    sway::type("save as");
    sway::key("Escape");
    ASSERT_TRUE(eventually([&] { return !panelIsOpen(); }));
    EXPECT_TRUE(eventually([&] { return sway::focused().pid == mousepadPid_; }));
    QThread::msleep(500); // a command run by mistake would have opened its dialog by now
    EXPECT_EQ(sway::windowsTitled("Save As"), 0);
    EXPECT_EQ(int(sway::windows().size()), windowsBefore);

    // Typing now reaches the application again.
    sway::type("typed after the panel");
    EXPECT_TRUE(eventually([] { return sway::focused().title.startsWith("*"); })); // mousepad marks an edited document
}

TEST_F(Wayland, TheToggleClosesAnOpenPanel)
{
    ASSERT_EQ(run(kestrioProgram(), {"--toggle"}).exitCode, 0);
    ASSERT_TRUE(eventually([&] { return panelHasTheFocus(); }));
    ASSERT_EQ(run(kestrioProgram(), {"--toggle"}).exitCode, 0);
    EXPECT_TRUE(eventually([&] { return !panelIsOpen(); }));
    EXPECT_TRUE(eventually([&] { return sway::focused().pid == mousepadPid_; }));
    EXPECT_EQ(kestrio_.state(), QProcess::Running); // the second launch only passed the request on
}

TEST(WaylandToggle, TheToggleStartsKestrioWhenItIsNotRunning)
{
    Applications apps;
    ASSERT_EQ(apps.start("mousepad", {}, "mousepad", "File → Save As"), "mousepad");
    const QString mousepadPid = pidOf("mousepad");
    ASSERT_TRUE(eventually([&] { return sway::focused().pid == mousepadPid; }));
    ASSERT_TRUE(writeSettings(kSettledIn));

    // The shortcut pressed before Kestrio was started: this launch becomes it.
    QProcess kestrio;
    kestrio.setProcessChannelMode(QProcess::ForwardedChannels);
    kestrio.start(kestrioProgram(), {"--toggle"});
    ASSERT_TRUE(kestrio.waitForStarted());
    const QString kestrioPid = QString::number(kestrio.processId());
    ASSERT_TRUE(eventually([&] {
        const sway::Window window = sway::focused();
        return window.pid == kestrioPid && window.title == "Kestrio";
    }));
    sway::type("save as");
    ASSERT_TRUE(eventually([&] {
        sway::key("Return");
        return eventually([] { return sway::windowsTitled("Save As") > 0; }, 2000);
    }));
    EXPECT_EQ(kestrio.state(), QProcess::Running); // it stays, as the instance
    kestrio.terminate();
    kestrio.waitForFinished();
}

// A compositor that tells other programs nothing of its windows, as GNOME's
// and KDE's do not: sway's interface is hidden from Kestrio, which then goes
// by the focus announcements on the accessibility bus.
class WaylandWithoutWindowInterface : public Wayland {
protected:
    QProcessEnvironment kestrioEnvironment() const override
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("SWAYSOCK");
        environment.insert("XDG_CURRENT_DESKTOP", "GNOME");
        return environment;
    }
};

TEST_F(WaylandWithoutWindowInterface, TheAppTheUserSwitchedToIsTheTarget)
{
    ASSERT_EQ(apps_.start(TWO_WINDOWS_PATH, {}, "kestrio-two-windows", "→"), "kestrio-two-windows");
    const QString twoWindowsPid = pidOf("kestrio-two-windows");

    // Opens the panel, runs `search`'s first result, and tells whether that
    // did what `happened` looks for. Kestrio hears of a focus change a moment
    // after the compositor made it: a panel opened before that shows the
    // previous application, and is closed and opened again.
    auto runFromPanel = [&](const QString& search, const std::function<bool()>& happened) {
        return eventually([&] {
            if (run(kestrioProgram(), {"--toggle"}).exitCode != 0 || !eventually([&] { return panelHasTheFocus(); }))
                return false;
            sway::type(search);
            sway::key("Return");
            if (eventually(happened, 3000))
                return true;
            if (panelIsOpen())
                sway::key("Escape");
            eventually([&] { return !panelIsOpen(); });
            return false;
        });
    };

    // Switched to as the compositor would on a click or Alt+Tab, no key typed in it.
    for (int round = 0; round < 2; ++round) {
        run("swaymsg", {"[app_id=\"mousepad\"] focus"});
        ASSERT_TRUE(eventually([&] { return sway::focused().pid == mousepadPid_; }));
        ASSERT_TRUE(runFromPanel("save as", [] { return sway::windowsTitled("Save As") > 0; }));
        run("swaymsg", {"[title=\"Save As\"] kill"}); // closed as its close button would
        ASSERT_TRUE(eventually([] { return sway::windowsTitled("Save As") == 0; }));

        run("swaymsg", {"[title=\"Sheet\"] focus"});
        ASSERT_TRUE(eventually([&] { return sway::focused().pid == twoWindowsPid; }));
        ASSERT_TRUE(runFromPanel("sum", [&] { return usageCount("kestrio-two-windows", "Cells → Sum") == round + 1; }));
    }
    screenshot("wayland-gnome-like");
}

} // namespace
