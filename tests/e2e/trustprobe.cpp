// Reports, every 300 ms, what the running program sees of the accessibility
// bus: whether it may read other applications, which applications it finds
// there, and how many connections of applications' own it keeps for
// presses. One JSON line {"trusted": …, "apps": […], "peers": N} each time
// that changes (and the first one).
//
//   kestrio-trust-probe [--press NAME "Menu → Item"]
//
// With --press, the item of the application NAME is pressed once, as soon as
// it can be read.
#include "base/platformwords.h"
#include "menu/accessibilityservice.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/linuxplatform.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    LinuxPlatform platform; // the backends of this session
    const QStringList args = app.arguments().mid(1);
    const qsizetype pressAt = args.indexOf(QStringLiteral("--press"));
    const QString pressName = pressAt >= 0 ? args.value(pressAt + 1) : QString();
    const QString pressPath = pressAt >= 0 ? args.value(pressAt + 2) : QString();
    bool pressed = pressName.isEmpty();

    auto& ax = static_cast<AtspiAccessibility&>(platform.accessibility());
    AccessibilityService service(ax, PlatformWords::linuxDesktop().keys);
    QJsonObject last;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QStringList names;
        for (const auto& info : ax.applications()) { // waits: fine for a probe
            names << info.name;
            if (!pressed && info.name == pressName) {
                for (const MenuItem& item : service.getMenuItems(ax.runningApplicationOf(info.pid))) {
                    if (item.pathKey() == pressPath)
                        pressed = ax.press(item.handle);
                }
            }
        }
        names.sort();
        const QJsonObject now{{"trusted", ax.isProcessTrusted()},
                              {"apps", QJsonArray::fromStringList(names)},
                              {"peers", qint64(ax.peerCount())}};
        if (now == last)
            return;
        last = now;
        std::printf("%s\n", QJsonDocument(now).toJson(QJsonDocument::Compact).constData());
        std::fflush(stdout);
    });
    ax.afterTrustIsKnown(&app, [&poll] { poll.start(300); });
    return app.exec();
}
