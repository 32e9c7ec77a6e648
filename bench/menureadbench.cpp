// Reads the menus of running applications over and over, cold (a new reader
// each time, so nothing is cached) and warm (the reader's two-second cache),
// and prints milliseconds per application.
#include "base/platformwords.h"
#include "bench/samples.h"
#include "menu/accessibilityservice.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/linuxplatform.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

namespace {

struct Stats {
    double median, min, max;
};

Stats stats(std::vector<double> ms)
{
    std::sort(ms.begin(), ms.end());
    return {ms[ms.size() / 2], ms.front(), ms.back()};
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList names = app.arguments().mid(1);
    const int kRounds = rounds(10);
    LinuxPlatform platform; // the backends of this session
    AtspiAccessibility& ax = platform.accessibility();
    int missing = 0;
    std::printf("%-14s %6s %28s %28s\n", "application", "items", "cold ms (median, min–max)", "warm ms (median, min–max)");
    for (const QString& name : names) {
        std::optional<RunningApplication> target;
        for (const auto& a : ax.applications()) {
            if (a.name.compare(name, Qt::CaseInsensitive) == 0)
                target = RunningApplication{a.pid, a.name, std::nullopt};
        }
        if (!target) {
            std::printf("%-14s not on the accessibility bus\n", qPrintable(name));
            ++missing;
            continue;
        }
        std::vector<double> cold, warm;
        qsizetype items = 0;
        for (int i = 0; i < kRounds; ++i) {
            AccessibilityService fresh(ax, PlatformWords::linuxDesktop().keys);
            QElapsedTimer timer;
            timer.start();
            items = fresh.getMenuItems(target).size();
            cold.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        AccessibilityService cached(ax, PlatformWords::linuxDesktop().keys);
        cached.getMenuItems(target);
        for (int i = 0; i < kRounds; ++i) {
            QElapsedTimer timer;
            timer.start();
            cached.getMenuItems(target);
            warm.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        if (items == 0)
            ++missing; // a reading that cannot read anything measures nothing
        const Stats c = stats(cold), w = stats(warm);
        std::printf("%-14s %6lld %10.1f (%6.1f–%6.1f) %14.3f (%5.3f–%5.3f)\n", qPrintable(name), qlonglong(items),
                    c.median, c.min, c.max, w.median, w.min, w.max);
    }
    return missing == 0 && !names.isEmpty() ? 0 : 1;
}
