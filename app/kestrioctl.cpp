// kestrioctl — Kestrio's menu reader and press from the command line, for
// scripts and tests: the same code the application runs.
#include "base/platformwords.h"
#include "base/settingsstore.h"
#include "menu/accessibilityservice.h"
#include "menu/pressmenuitem.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/linuxplatform.h"
#include "platform/linux/sway/swaywindows.h"
#include "platform/linux/x11/x11windows.h"
#include "search/usagetracker.h"
#include "update/installmarker.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

constexpr int kNotFound = 1;
constexpr int kFailed = 2;
constexpr int kUsage = 64;

void out(const QString& text)
{
    std::fputs(text.toUtf8().constData(), stdout);
}

void err(const QString& text)
{
    std::fputs(text.toUtf8().constData(), stderr);
}

int usage()
{
    err(QStringLiteral("usage: kestrioctl apps\n"
                       "       kestrioctl menus [--pid N | --name NAME | --window ID | --active] [--json]\n"
                       "       kestrioctl press (--pid N | --name NAME | --window ID | --active) \"Menu → Item\"\n"
                       "       kestrioctl mark-install FOLDER VERSION   (release tooling: makes FOLDER a\n"
                       "                                                self-updatable installation)\n"));
    return kUsage;
}

struct Target {
    std::optional<RunningApplication> app;
    QString error;
};

Target resolveTarget(AtspiAccessibility& ax, const QStringList& args)
{
    const qsizetype pidAt = args.indexOf(QStringLiteral("--pid"));
    const qsizetype nameAt = args.indexOf(QStringLiteral("--name"));
    const qsizetype windowAt = args.indexOf(QStringLiteral("--window"));
    std::optional<qint32> pid;
    if (windowAt >= 0) {
        bool ok = false;
        const unsigned long window = args.value(windowAt + 1).toULong(&ok, 0);
        if (!ok)
            return {std::nullopt, QStringLiteral("--window needs a window id")};
        if (auto app = ax.runningApplication(window))
            return {app, {}};
        return {std::nullopt, QStringLiteral("Window %1 belongs to no known process.").arg(window)};
    } else if (pidAt >= 0) {
        bool ok = false;
        pid = args.value(pidAt + 1).toInt(&ok);
        if (!ok)
            return {std::nullopt, QStringLiteral("--pid needs a process id")};
    } else if (nameAt >= 0) {
        const QString name = args.value(nameAt + 1);
        for (const auto& app : ax.applications()) {
            if (app.name.compare(name, Qt::CaseInsensitive) == 0) {
                pid = app.pid;
                break;
            }
        }
        if (!pid)
            return {std::nullopt, QStringLiteral("No application named “%1” on the accessibility bus.").arg(name)};
    } else {
        if (auto front = ax.frontmostApplication())
            return {front, {}};
        return {std::nullopt, QStringLiteral("No active application.")};
    }
    // Name the application as the panel would, from its window where it has one.
    if (auto app = ax.runningApplicationOf(*pid))
        return {app, {}};
    for (const auto& info : ax.applications()) {
        if (info.pid == *pid)
            return {RunningApplication{*pid, info.name, std::nullopt}, {}};
    }
    return {std::nullopt, QStringLiteral("Process %1 is not on the accessibility bus.").arg(*pid)};
}

int apps(AtspiAccessibility& ax)
{
    for (const auto& app : ax.applications())
        out(QStringLiteral("%1\t%2\t%3\n").arg(app.pid).arg(app.name, app.toolkit));
    return 0;
}

int menus(AtspiAccessibility& ax, const QStringList& args)
{
    const Target target = resolveTarget(ax, args);
    if (!target.app) {
        err(target.error + u'\n');
        return kNotFound;
    }
    AccessibilityService service(ax, PlatformWords::linuxDesktop().keys);
    // Submenus that held nothing are named too, so that "filled only when
    // opened" is told apart from "could not be read".
    QStringList emptySubmenus;
    const QList<MenuItem> items = service.getMenuItems(target.app, &emptySubmenus);
    if (args.contains(QStringLiteral("--json"))) {
        QJsonArray array;
        for (const MenuItem& item : items) {
            array.append(QJsonObject{
                {"path", item.pathKey()},
                {"menuPath", QJsonArray::fromStringList(item.menuPath)},
                {"shortcut", item.shortcut ? QJsonValue(*item.shortcut) : QJsonValue()},
                {"enabled", item.isEnabled},
            });
        }
        for (const QString& path : std::as_const(emptySubmenus))
            array.append(QJsonObject{{"path", path}, {"emptySubmenu", true}});
        out(QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Indented)));
        return 0;
    }
    for (const MenuItem& item : items) {
        out(QStringLiteral("%1\t%2\t%3\n")
                .arg(item.pathKey(), item.shortcut.value_or(QString()),
                     item.isEnabled ? QStringLiteral("enabled") : QStringLiteral("disabled")));
    }
    for (const QString& path : std::as_const(emptySubmenus))
        out(QStringLiteral("%1 → …\t\tempty until opened\n").arg(path));
    return 0;
}

int press(AtspiAccessibility& ax, const QStringList& args)
{
    const QString path = args.isEmpty() ? QString() : args.last();
    if (path.isEmpty() || path.startsWith(QLatin1String("--")))
        return usage();
    const Target target = resolveTarget(ax, args.mid(0, args.size() - 1));
    if (!target.app) {
        err(target.error + u'\n');
        return kNotFound;
    }
    AccessibilityService service(ax, PlatformWords::linuxDesktop().keys);
    const QString wanted = path.normalized(QString::NormalizationForm_C);
    for (const MenuItem& item : service.getMenuItems(target.app)) {
        if (item.pathKey().normalized(QString::NormalizationForm_C) != wanted)
            continue;
        if (pressMenuItem(item, ax)) {
            SettingsStore settings(SettingsStore::standardPath());
            UsageTracker(settings).recordUsage(item.appBundleID.value_or(QStringLiteral("unknown")), item.pathKey());
            return 0;
        }
        err(QStringLiteral("“%1” could not be pressed%2.\n")
                .arg(path, item.isEnabled ? QString() : QStringLiteral(" (it is disabled)")));
        return kFailed;
    }
    err(QStringLiteral("No menu item “%1” in %2.\n").arg(path, target.app->localizedName.value_or(QStringLiteral("the application"))));
    return kNotFound;
}

// Writes the install marker that lets the self-updater replace FOLDER, listing
// every file FOLDER holds now.
int markInstall(const QStringList& args)
{
    if (args.size() != 2)
        return usage();
    const auto marker = InstallMarker::describe(args[0], args[1]);
    if (const auto* error = std::get_if<QString>(&marker)) {
        err(*error + u'\n');
        return kFailed;
    }
    if (const auto error = std::get<InstallMarker>(marker).write(args[0])) {
        err(*error + u'\n');
        return kFailed;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    LinuxPlatform platform; // the backends of this session
    QStringList args = app.arguments().mid(1);
    if (args.isEmpty())
        return usage();
    const QString command = args.takeFirst();
    if (command == QLatin1String("mark-install"))
        return markInstall(args);
    // sway's windows arrive a moment after connecting; a command line may wait.
    if (auto* sway = dynamic_cast<SwayWindows*>(&platform.windowDirectory()))
        sway->waitForTree(3000);
    if (auto* x11 = dynamic_cast<X11Windows*>(&platform.windowDirectory()))
        x11->waitForFirstReading(3000);
    AtspiAccessibility& ax = platform.accessibility();
    if (command == QLatin1String("apps"))
        return apps(ax);
    if (command == QLatin1String("menus"))
        return menus(ax, args);
    if (command == QLatin1String("press"))
        return press(ax, args);
    return usage();
}
