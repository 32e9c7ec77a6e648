#pragma once

// Helpers for tests that drive real applications inside the headless session
// that scripts/headless-session made for the test.

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

#include <functional>
#include <iostream>
#include <memory>
#include <vector>

namespace e2e {

// Generous: a slow machine must never fail a test, only make it wait longer.
inline constexpr int kPatienceMs = 30000;

struct ProcessResult {
    int exitCode = -1;
    QString out;
    QString err;
};

inline ProcessResult run(const QString& program, const QStringList& arguments, int timeoutMs = kPatienceMs)
{
    QProcess process;
    process.start(program, arguments);
    ProcessResult result;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        result.err = QStringLiteral("timed out");
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

// The programs under test: the build's own, or installed ones named by
// KESTRIO_UNDER_TEST and KESTRIOCTL_UNDER_TEST (the packaging test).
inline QString kestrioProgram()
{
    return qEnvironmentVariable("KESTRIO_UNDER_TEST", QStringLiteral(KESTRIO_PATH));
}

inline QString kestrioctlProgram()
{
    return qEnvironmentVariable("KESTRIOCTL_UNDER_TEST", QStringLiteral(KESTRIOCTL_PATH));
}

inline ProcessResult kestrioctl(const QStringList& arguments)
{
    return run(kestrioctlProgram(), arguments);
}

// Polls until `condition` holds or patience runs out.
inline bool eventually(const std::function<bool()>& condition, int timeoutMs = kPatienceMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        if (condition())
            return true;
        QThread::msleep(100);
    }
    return condition();
}

// The process id of the application called `name` on this session's
// accessibility bus; other sessions on the machine have their own.
inline QString pidOf(const QString& name)
{
    for (const QString& line : kestrioctl({"apps"}).out.split(u'\n', Qt::SkipEmptyParts)) {
        if (line.section(u'\t', 1, 1) == name)
            return line.section(u'\t', 0, 0);
    }
    return {};
}

// The desktop's accessibility switch, as its settings would throw it.
inline bool setAccessibilitySwitch(bool on)
{
    return run(QStringLiteral("dbus-send"),
               {"--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus",
                "org.freedesktop.DBus.Properties.Set", "string:org.a11y.Status", "string:IsEnabled",
                on ? "variant:boolean:true" : "variant:boolean:false"})
               .exitCode
           == 0;
}

inline bool accessibilitySwitch()
{
    return run(QStringLiteral("dbus-send"), {"--session", "--print-reply=literal", "--dest=org.a11y.Bus", "/org/a11y/bus",
                                             "org.freedesktop.DBus.Properties.Get", "string:org.a11y.Status",
                                             "string:IsEnabled"})
        .out.contains(QStringLiteral("true"));
}

// The first window `xdotool search` finds with these arguments, or "".
inline QString firstWindow(const QStringList& searchArguments)
{
    return run(QStringLiteral("xdotool"), QStringList{QStringLiteral("search")} + searchArguments)
        .out.split(u'\n', Qt::SkipEmptyParts)
        .value(0);
}

// The process id of the active window.
inline QString activePid()
{
    return run(QStringLiteral("xdotool"),
               {QStringLiteral("getwindowpid"), run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")}).out.trimmed()})
        .out.trimmed();
}

// xdotool's arguments for two taps of `key`, `pause` seconds apart.
inline QStringList doubleTap(const QString& key, const QString& pause = QStringLiteral("0.05"))
{
    return {QStringLiteral("keydown"), key, QStringLiteral("keyup"), key, QStringLiteral("sleep"), pause,
            QStringLiteral("keydown"), key, QStringLiteral("keyup"), key};
}

// Visible windows whose title contains `name`.
inline int windowsNamed(const QString& name)
{
    const ProcessResult r = run(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                  QStringLiteral("--name"), name});
    return int(r.out.split(u'\n', Qt::SkipEmptyParts).size());
}

// Kestrio's settings file in this session.
inline QString settingsFile()
{
    return qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/kestrio/settings.json");
}

// Settings as a user's earlier runs left them, before Kestrio starts.
inline bool writeSettings(const QByteArray& json)
{
    QDir().mkpath(QFileInfo(settingsFile()).absolutePath());
    QFile file(settingsFile());
    return file.open(QIODevice::WriteOnly) && file.write(json) == json.size();
}

// The usage counts Kestrio wrote into this session's settings.
inline qint64 usageCount(const QString& bundle, const QString& path)
{
    QFile file(settingsFile());
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QJsonObject usage = QJsonDocument::fromJson(file.readAll()).object().value("menuItemUsage").toObject();
    return usage.value(bundle).toObject().value(path).toInteger();
}

// A screenshot of the whole session in the artifacts folder; its path.
// Wayland compositors are photographed by grim, X servers by import.
inline QString screenshot(const QString& name)
{
    QDir().mkpath(QStringLiteral(ARTIFACTS_DIR));
    const QString path = QStringLiteral(ARTIFACTS_DIR "/%1.png").arg(name);
    QThread::msleep(250); // let the last frame reach the screen
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        run(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), path});
    else
        run(QStringLiteral("grim"), {path});
    std::cout << "screenshot: " << path.toStdString() << std::endl;
    return path;
}

// A helper program that reports its state as JSON lines on standard output;
// killed when the test ends.
class ReportingProcess {
public:
    ReportingProcess(const QString& program, const QStringList& arguments)
    {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(program, arguments);
        process_.waitForStarted();
    }
    ~ReportingProcess()
    {
        process_.kill();
        process_.waitForFinished();
    }

    // Waits for a reported state that satisfies `condition`.
    bool reports(const std::function<bool(const QJsonObject&)>& condition)
    {
        return eventually([&] {
            process_.waitForReadyRead(50);
            buffer_ += process_.readAllStandardOutput();
            for (const QByteArray& line : buffer_.split('\n')) {
                const QJsonObject state = QJsonDocument::fromJson(line).object();
                if (!state.isEmpty() && condition(state)) {
                    last_ = state;
                    return true;
                }
            }
            return false;
        });
    }
    QJsonObject last() const { return last_; }

private:
    QProcess process_;
    QByteArray buffer_;
    QJsonObject last_;
};

// Applications started by a test, stopped when it ends.
class Applications {
public:
    ~Applications()
    {
        for (auto& p : processes_) {
            p->terminate();
            if (!p->waitForFinished(3000))
                p->kill();
            p->waitForFinished();
        }
    }

    // Starts `program` and waits until its menus can be read; the name it
    // has on the accessibility bus is returned (empty when it never came).
    QString start(const QString& program, const QStringList& arguments, const QString& busName, const QString& someItem)
    {
        auto process = std::make_unique<QProcess>();
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process->setStandardOutputFile(QProcess::nullDevice());
        process->start(program, arguments);
        if (!process->waitForStarted())
            return {};
        processes_.push_back(std::move(process));
        const bool ready = eventually([&] {
            return kestrioctl({"menus", "--name", busName}).out.contains(someItem);
        });
        return ready ? busName : QString();
    }

private:
    std::vector<std::unique_ptr<QProcess>> processes_;
};

} // namespace e2e
