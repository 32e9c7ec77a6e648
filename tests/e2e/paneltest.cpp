#include "desktop.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <iostream>

namespace {

using namespace e2e;

// The harness opens the panel over the active window and reports its state.
class Harness : public ReportingProcess {
public:
    explicit Harness(const QStringList& arguments = {}) : ReportingProcess(QStringLiteral(PANEL_HARNESS_PATH), arguments) {}
};

QString activeWindowPid()
{
    const QString window = run("xdotool", {"getactivewindow"}).out.trimmed();
    return run("xdotool", {"getwindowpid", window}).out.trimmed();
}

class PanelOverMousepad : public testing::Test {
protected:
    Applications apps;
    QString mousepadPid;

    void SetUp() override
    {
        ASSERT_EQ(apps.start("mousepad", {}, "mousepad", "File → Save As"), "mousepad");
        mousepadPid = pidOf("mousepad");
        const QString window = run("xdotool", {"search", "--onlyvisible", "--class", "mousepad"}).out.split(u'\n').value(0);
        run("xdotool", {"windowactivate", "--sync", window});
        ASSERT_TRUE(eventually([&] { return activeWindowPid() == mousepadPid; }));
    }
};

TEST_F(PanelOverMousepad, TypeSaveAsThenReturnRunsItInMousepad)
{
    Harness harness;
    ASSERT_TRUE(harness.reports([](const QJsonObject& s) { return s["body"] == "results" && s["focus"] == true; }));
    screenshot("panel-results");
    run("xdotool", {"type", "--delay", "60", "save as"});
    ASSERT_TRUE(harness.reports([](const QJsonObject& s) { return s["query"] == "save as"; }));
    const QJsonArray first = harness.last()["rows"].toArray().at(0).toArray();
    EXPECT_EQ(first, (QJsonArray{"Save As...", "File", "Ctrl+Shift+S"}));
    // The name the desktop shows for it, from its desktop entry.
    EXPECT_EQ(harness.last()["footer"], "Menus from: <b>Mousepad</b>");
    screenshot("panel-save-as");

    run("xdotool", {"key", "Return"});
    EXPECT_TRUE(harness.reports([](const QJsonObject& s) { return s["dismissed"] == true; }));
    EXPECT_TRUE(eventually([&] { return windowsNamed("Save As") > 0; }));
    EXPECT_TRUE(eventually([&] { return activeWindowPid() == mousepadPid; }));
}

TEST_F(PanelOverMousepad, EscapeClosesWithoutPressing)
{
    Harness harness;
    ASSERT_TRUE(harness.reports([](const QJsonObject& s) { return s["body"] == "results" && s["focus"] == true; }));
    run("xdotool", {"type", "--delay", "60", "qqqq"});
    ASSERT_TRUE(harness.reports([](const QJsonObject& s) { return s["body"] == "noMatch"; }));
    screenshot("panel-no-match");
    run("xdotool", {"key", "Escape"});
    EXPECT_TRUE(harness.reports([](const QJsonObject& s) { return s["dismissed"] == true; }));
    EXPECT_TRUE(eventually([&] { return activeWindowPid() == mousepadPid; }));
    QThread::msleep(1000);
    EXPECT_EQ(windowsNamed("Save As"), 0);
}

// The menus take a while: what the user types meanwhile is kept and filters
// them when they come; an arrow before there is anything to select does nothing.
TEST_F(PanelOverMousepad, KeysTypedWhileReadingAreKept)
{
    Harness harness({"--delay-reading", "2500"});
    ASSERT_TRUE(harness.reports([](const QJsonObject& s) { return s["body"] == "loading" && s["focus"] == true; }));
    run("xdotool", {"type", "--delay", "60", "save"});
    run("xdotool", {"key", "Down"});
    ASSERT_TRUE(harness.reports([](const QJsonObject& s) { return s["query"] == "save" && s["body"] == "loading"; }));
    screenshot("panel-loading");
    ASSERT_TRUE(harness.reports([](const QJsonObject& s) { return s["body"] == "results"; }));
    EXPECT_EQ(harness.last()["query"], "save");
    EXPECT_EQ(harness.last()["selected"], 0);
    EXPECT_EQ(harness.last()["rows"].toArray().at(0).toArray().at(0), "Save");
    run("xdotool", {"key", "Down", "Down"});
    EXPECT_TRUE(harness.reports([](const QJsonObject& s) { return s["selected"] == 2; }));
    screenshot("panel-selection");
    run("xdotool", {"key", "Escape"});
    EXPECT_TRUE(harness.reports([](const QJsonObject& s) { return s["dismissed"] == true; }));
}

} // namespace
