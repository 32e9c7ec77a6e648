#pragma once

// Helpers for tests in a headless GNOME Shell or KWin session
// (scripts/headless-session --gnome, --kde). Neither compositor tells other
// programs about its windows: what has the focus and what a window shows
// come from the accessibility bus, keys from the session's keyboard.

#include "desktop.h"

#include <QJsonObject>

#include <gtest/gtest.h>

namespace e2e::session {

struct Window {
    QString pid;
    QString app;
    QString role;
    QString name;
    bool active = false;
};

inline ProcessResult look(const QStringList& arguments)
{
    return run(QStringLiteral("/usr/bin/python3"), QStringList{QStringLiteral(SOURCE_DIR "/tests/e2e/desktoplook.py")} + arguments,
               15000);
}

inline QList<Window> windows()
{
    QList<Window> found;
    for (const QString& line : look({"windows"}).out.split(u'\n', Qt::SkipEmptyParts)) {
        const QJsonObject w = QJsonDocument::fromJson(line.toUtf8()).object();
        found.append({QString::number(w.value("pid").toInteger()), w.value("app").toString(), w.value("role").toString(),
                      w.value("name").toString(), w.value("active").toBool()});
    }
    return found;
}

// The process whose window is active, as its toolkit tells it.
inline QString activeWindowPid()
{
    for (const Window& window : windows()) {
        if (window.active)
            return window.pid;
    }
    return {};
}

inline int windowsTitled(const QString& name)
{
    int count = 0;
    for (const Window& window : windows())
        count += window.name == name;
    return count;
}

// The windows as a failure message shows them.
inline std::string describeWindows()
{
    std::string out;
    for (const Window& w : windows())
        out += (w.pid + ' ' + w.app + " \"" + w.name + "\"" + (w.active ? " active" : "") + "\n").toStdString();
    return out;
}

// What `pid`'s windows show: labels, rows, buttons.
inline QStringList texts(const QString& pid)
{
    return look({"texts", pid}).out.split(u'\n', Qt::SkipEmptyParts);
}

// Presses `pid`'s push button `name`, as a click would.
inline bool press(const QString& pid, const QString& name)
{
    return look({"press", pid, name}).exitCode == 0;
}

// Keys through the session's keyboard, as the user's would arrive:
// "type save as", "key Return", "chord ctrl+alt+space".
inline bool keys(const QStringList& commands)
{
    const ProcessResult r = run(QStringLiteral(SOURCE_DIR "/scripts/session-keyboard"),
                                QStringList{qEnvironmentVariable("KESTRIO_SESSION_KEYBOARD")} + commands);
    if (r.exitCode != 0)
        std::cerr << "session-keyboard: " << r.err.toStdString() << std::endl;
    return r.exitCode == 0;
}

// A user past the welcome and the no-tray notice (neither session shows a tray).
inline constexpr const char* kSettledIn = R"({"hasLaunchedBefore": true, "noTrayNoticeShown": true})";

// Mousepad in front, the user typing in it, and Kestrio started after it.
class Desktop : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_FALSE(qEnvironmentVariable("KESTRIO_SESSION_KEYBOARD").isEmpty());
        ASSERT_TRUE(qEnvironmentVariable("DISPLAY").isEmpty()); // nothing may lean on X
        ASSERT_EQ(apps_.start("mousepad", {}, "mousepad", "File → Save As"), "mousepad");
        mousepadPid_ = pidOf("mousepad");
        ASSERT_TRUE(eventually([&] { return activeWindowPid() == mousepadPid_; }));
        ASSERT_TRUE(keys({"type typed before Kestrio"}));
    }

    void TearDown() override
    {
        kestrio_.terminate();
        if (!kestrio_.waitForFinished(5000))
            kestrio_.kill();
        kestrio_.waitForFinished();
    }

    void startKestrio(const QByteArray& settings = kSettledIn)
    {
        ASSERT_TRUE(writeSettings(settings));
        kestrio_.setProcessChannelMode(QProcess::ForwardedChannels);
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

    bool panelIsActive()
    {
        for (const Window& window : windows()) {
            if (window.pid == kestrioPid_ && window.name == "Kestrio" && window.active)
                return true;
        }
        return false;
    }

    bool panelIsOpen()
    {
        for (const Window& window : windows()) {
            if (window.pid == kestrioPid_ && window.name == "Kestrio")
                return true;
        }
        return false;
    }

    // The panel shows `search` in its field, and `row` among its results.
    bool panelFinds(const QString& search, const QString& row)
    {
        const QStringList shown = texts(kestrioPid_);
        return shown.contains(search) && shown.contains(row);
    }

    // The toggle opens the panel over mousepad; "save as" and Return run the
    // command there; Escape closes the panel and gives mousepad the keyboard back.
    void toggleSaveAsAndEscape(const std::function<void()>& toggle)
    {
        toggle();
        ASSERT_TRUE(eventually([&] { return panelIsActive(); })) << describeWindows();
        ASSERT_TRUE(keys({"type save as"}));
        ASSERT_TRUE(eventually([&] { return panelFinds("save as", "Save As..."); }))
            << texts(kestrioPid_).join(u'|').toStdString();
        EXPECT_TRUE(texts(kestrioPid_).contains("Menus from: Mousepad"));
        ASSERT_TRUE(keys({"key Return"}));
        ASSERT_TRUE(eventually([] { return windowsTitled("Save As") > 0; })) << describeWindows();
        EXPECT_TRUE(eventually([&] { return !panelIsOpen(); })) << describeWindows();
        // Its dialog has the keyboard.
        EXPECT_TRUE(eventually([&] { return activeWindowPid() == mousepadPid_; })) << describeWindows();
        ASSERT_TRUE(keys({"key Escape"})); // closes mousepad's dialog
        ASSERT_TRUE(eventually([] { return windowsTitled("Save As") == 0; })) << describeWindows();

        toggle();
        ASSERT_TRUE(eventually([&] { return panelIsActive(); })) << describeWindows();
        ASSERT_TRUE(keys({"type save as", "key Escape"}));
        ASSERT_TRUE(eventually([&] { return !panelIsOpen(); })) << describeWindows();
        EXPECT_TRUE(eventually([&] { return activeWindowPid() == mousepadPid_; })) << describeWindows();
        QThread::msleep(500); // a command run by mistake would have opened its dialog by now
        EXPECT_EQ(windowsTitled("Save As"), 0);
    }

    Applications apps_;
    QProcess kestrio_;
    QString mousepadPid_;
    QString kestrioPid_;
};

} // namespace e2e::session
