#include "desktop.h"

#include <gtest/gtest.h>

namespace {

using namespace e2e;

// The probe runs the real detector and prints a line per activation.
class Probe {
public:
    explicit Probe(const QStringList& arguments)
    {
        process_.start(QStringLiteral(HOTKEY_PROBE_PATH), arguments);
        process_.waitForStarted();
    }
    ~Probe()
    {
        process_.kill();
        process_.waitForFinished();
    }

    QStringList lines()
    {
        process_.waitForReadyRead(50);
        output_ += QString::fromUtf8(process_.readAllStandardOutput());
        return output_.split(u'\n', Qt::SkipEmptyParts);
    }
    int activations() { return int(lines().count("activated")); }
    bool becameActive()
    {
        return eventually([&] { return lines().contains("active"); });
    }

private:
    QProcess process_;
    QString output_;
};

void xdotool(const QStringList& arguments)
{
    run("xdotool", arguments);
}

// Gives an activation that should not come every chance to come anyway.
void settle()
{
    QThread::msleep(1500);
}

TEST(Hotkey, QuickDoubleTapOfCtrlActivatesOnceWhicheverCtrl)
{
    Probe probe({"doubleTapCommand"});
    ASSERT_TRUE(probe.becameActive());
    // One xdotool run: the two releases are milliseconds apart.
    xdotool(doubleTap("Control_L", "0.05"));
    EXPECT_TRUE(eventually([&] { return probe.activations() == 1; }));
    QThread::msleep(500);
    xdotool(doubleTap("Control_R", "0.05"));
    EXPECT_TRUE(eventually([&] { return probe.activations() == 2; }));
    settle();
    EXPECT_EQ(probe.activations(), 2);
}

// Super belongs to the desktop (a tap opens GNOME's overview, KDE's launcher);
// a slow double tap is two taps; Ctrl held for a copy and a paste a moment
// apart are two shortcuts, not a gesture, also as quickly as fast typists
// select all and copy; and Ctrl held for two clicks, or for a zoom with the
// wheel, is no tap either.
TEST(Hotkey, WhatIsNotTheGestureDoesNothing)
{
    Probe probe({"doubleTapCommand"});
    ASSERT_TRUE(probe.becameActive());
    // Each try apart from the next: a release that ends one and the first
    // release of the next would otherwise make a double tap of their own.
    const QList<QStringList> tries{
        doubleTap("Super_L", "0.05"),
        doubleTap("Control_L", "0.4"),
        {"key", "ctrl+c", "sleep", "0.4", "key", "ctrl+v"},
        {"key", "--delay", "60", "ctrl+a", "ctrl+c"},
        {"keydown", "Control_L", "click", "1", "keyup", "Control_L", "sleep", "0.05",
         "keydown", "Control_L", "click", "1", "keyup", "Control_L"},
        {"keydown", "Control_R", "click", "4", "keyup", "Control_R", "sleep", "0.05",
         "keydown", "Control_R", "click", "5", "keyup", "Control_R"},
    };
    for (const QStringList& keys : tries) {
        xdotool(keys);
        QThread::msleep(500);
        EXPECT_EQ(probe.activations(), 0) << keys.join(u' ').toStdString();
    }
    settle();
    EXPECT_EQ(probe.activations(), 0);
}

TEST(Hotkey, QuickDoubleTapOfAltInTheOptionMode)
{
    Probe probe({"doubleTapOption"});
    ASSERT_TRUE(probe.becameActive());
    xdotool(doubleTap("Control_L", "0.05"));
    QThread::msleep(500);
    xdotool(doubleTap("Alt_L", "0.05"));
    EXPECT_TRUE(eventually([&] { return probe.activations() == 1; }));
    settle();
    EXPECT_EQ(probe.activations(), 1);
}

TEST(Hotkey, CustomShortcutActivatesAndTheKeyStillReachesTheFocusedWindow)
{
    QProcess xev;
    xev.start("xev", {"-event", "keyboard", "-name", "kestrio-xev"});
    ASSERT_TRUE(xev.waitForStarted());
    QString window;
    ASSERT_TRUE(eventually([&] {
        window = run("xdotool", {"search", "--name", "kestrio-xev"}).out.split(u'\n', Qt::SkipEmptyParts).value(0);
        return !window.isEmpty();
    }));
    xdotool({"windowactivate", "--sync", window});

    Probe probe({"customShortcut", "40", "0x180000"}); // Command(Ctrl)+Option(Alt)+K
    ASSERT_TRUE(probe.becameActive());
    xdotool({"key", "ctrl+alt+k"});
    EXPECT_TRUE(eventually([&] { return probe.activations() == 1; }));
    xdotool({"key", "ctrl+alt+shift+k"}); // an extra modifier: no match
    xdotool({"key", "k"});
    settle();
    EXPECT_EQ(probe.activations(), 1);

    QString seen;
    EXPECT_TRUE(eventually([&] {
        xev.waitForReadyRead(50);
        seen += QString::fromUtf8(xev.readAllStandardOutput());
        return seen.count("keysym 0x6b, k") + seen.count("keysym 0x4b, K") >= 3;
    })) << seen.right(2000).toStdString();
    xev.kill();
    xev.waitForFinished();
}

} // namespace
