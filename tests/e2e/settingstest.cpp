#include "desktop.h"

#include <QJsonArray>

#include <gtest/gtest.h>

namespace {

using namespace e2e;

class SettingsHarness : public ReportingProcess {
public:
    explicit SettingsHarness(const QString& scene) : ReportingProcess(QStringLiteral(SETTINGS_HARNESS_PATH), {scene}) {}
    bool ready() { return reports([](const QJsonObject& s) { return s.value("ready").toBool(); }); }
};

TEST(SettingsWindow, EachStateOnScreen)
{
    const char* scenes[] = {"general", "hotkey", "appearance", "updates-available", "updates-downloading", "data",
                            "dark", "about", "onboarding"};
    for (const char* scene : scenes) {
        SCOPED_TRACE(scene);
        SettingsHarness harness(scene);
        ASSERT_TRUE(harness.ready());
        const QString title = QString(scene) == "about" ? "About Kestrio"
            : QString(scene) == "onboarding"          ? "Welcome to Kestrio"
                                                      : "Kestrio Settings";
        EXPECT_TRUE(eventually([&] { return windowsNamed(title) == 1; }));
        screenshot(QStringLiteral("settings-%1").arg(scene));
    }
}

TEST(SettingsWindow, TheRecorderTakesRealKeyPresses)
{
    SettingsHarness harness("hotkey");
    ASSERT_TRUE(harness.ready());
    const QJsonArray at = harness.last().value("recorder").toArray();
    ASSERT_TRUE(harness.last().value("recorderVisible").toBool());
    auto record = [&](const QString& keys) {
        run("xdotool", {"mousemove", QString::number(at[0].toInt()), QString::number(at[1].toInt()), "click", "1"});
        QThread::msleep(300);
        run("xdotool", {"key", keys});
    };
    record("ctrl+alt+k");
    ASSERT_TRUE(harness.reports([](const QJsonObject& s) { return s.value("shortcut").toObject().value("keyCode") == 40; }));
    QJsonObject shortcut = harness.last().value("shortcut").toObject();
    EXPECT_EQ(shortcut.value("modifiers").toInteger(), 0x100000 | 0x80000); // Ctrl plays Command's part
    EXPECT_EQ(shortcut.value("text").toString(), "Ctrl+Alt+K");
    screenshot("settings-custom-recorded");

    // Super plays Control's part; Escape alone is swallowed and recording goes on.
    run("xdotool", {"mousemove", QString::number(at[0].toInt()), QString::number(at[1].toInt()), "click", "1"});
    QThread::msleep(300);
    run("xdotool", {"key", "Escape"});
    run("xdotool", {"key", "super+shift+space"});
    ASSERT_TRUE(harness.reports([](const QJsonObject& s) { return s.value("shortcut").toObject().value("keyCode") == 49; }));
    shortcut = harness.last().value("shortcut").toObject();
    EXPECT_EQ(shortcut.value("modifiers").toInteger(), 0x20000 | 0x40000);
    EXPECT_EQ(shortcut.value("text").toString(), "Super+Shift+Space");
}

TEST(Kestrio, LaunchedAgainWithoutTrayIconItOpensTheSettings)
{
    ASSERT_TRUE(writeSettings(R"({"hasLaunchedBefore": true, "hideMenuBarIcon": true})"));

    QProcess kestrio;
    kestrio.setProcessChannelMode(QProcess::ForwardedChannels);
    kestrio.start(QStringLiteral(KESTRIO_PATH));
    ASSERT_TRUE(kestrio.waitForStarted());
    QThread::msleep(1500);
    EXPECT_EQ(windowsNamed("Kestrio Settings"), 0);

    // The second launch hands over to the first and ends.
    EXPECT_EQ(run(QStringLiteral(KESTRIO_PATH), {}).exitCode, 0);
    ASSERT_TRUE(eventually([] { return windowsNamed("Kestrio Settings") == 1; }));
    screenshot("app-settings-on-reopen");

    // The focus starts on the first control, "Launch at login".
    const QString window = run("xdotool", {"search", "--onlyvisible", "--name", "Kestrio Settings"}).out.trimmed();
    run("xdotool", {"windowactivate", "--sync", window});
    run("xdotool", {"key", "space"});
    const QString entry = qEnvironmentVariable("XDG_CONFIG_HOME") + "/autostart/kestrio.desktop";
    ASSERT_TRUE(eventually([&] { return QFile::exists(entry); }));
    QFile desktop(entry);
    ASSERT_TRUE(desktop.open(QIODevice::ReadOnly));
    EXPECT_TRUE(desktop.readAll().contains(("Exec=" + QStringLiteral(KESTRIO_PATH)).toUtf8()));

    kestrio.terminate();
    kestrio.waitForFinished();
}

} // namespace
