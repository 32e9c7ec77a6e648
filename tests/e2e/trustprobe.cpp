// Reports, every 300 ms, what the running program sees of the accessibility
// bus: whether it may read other applications, and which applications it
// finds there. One JSON line {"trusted": …, "apps": […]} each time that
// changes (and the first one).
#include "platform/linux/atspi/atspiaccessibility.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    auto& ax = static_cast<AtspiAccessibility&>(Accessibility::current());
    QJsonObject last;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QStringList names;
        for (const auto& info : ax.applications()) // waits: fine for a probe
            names << info.name;
        names.sort();
        const QJsonObject now{{"trusted", ax.isProcessTrusted()}, {"apps", QJsonArray::fromStringList(names)}};
        if (now == last)
            return;
        last = now;
        std::printf("%s\n", QJsonDocument(now).toJson(QJsonDocument::Compact).constData());
        std::fflush(stdout);
    });
    ax.afterTrustIsKnown(&app, [&poll] { poll.start(300); });
    return app.exec();
}
