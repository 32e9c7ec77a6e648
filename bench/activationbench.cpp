// From the second tap of a double tap to the search panel on screen: injects
// double taps of Ctrl with XTest over the active application and times the
// panel's first paint and the paint that shows its results, with the menu
// reader's cache cold (a new reader every time) and warm (one reader):
// ten rounds of each.
#include "base/platformwords.h"
#include "base/settingsstore.h"
#include "bench/paintwatch.h"
#include "bench/samples.h"
#include "hotkey/hotkeyservice.h"
#include "menu/accessibilityservice.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/desktopwindows.h"
#include "platform/hotkeyplatform.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/linuxplatform.h"
#include "platform/linux/x11/x11windows.h"
#include "search/searchpanel.h"
#include "search/searchpanelcontroller.h"
#include "search/searchviewmodel.h"
#include "support/quietsearch.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTimer>

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

#include <algorithm>
#include <cstdio>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    LinuxPlatform platform; // the backends of this session
    app.setQuitOnLastWindowClosed(false);
    SettingsStore settings(QDir::temp().filePath(QStringLiteral("kestrio-activation-bench.json")));
    HotkeyService hotkey(platform.hotkeys(), settings, Clock::monotonic());
    QuietSearch search(platform.systemInfo());
    std::optional<RunningApplication> target;
    const int kRounds = rounds(10);
    const KeyWords& keys = PlatformWords::linuxDesktop().keys;
    auto warmReader = std::make_unique<AccessibilityService>(platform.accessibility(), keys);
    std::unique_ptr<AccessibilityService> coldReader;
    std::unique_ptr<SearchPanelController> controller;
    PaintWatch watch;
    QElapsedTimer sinceTap;
    std::vector<double> firstPaint[2], resultsPaint[2];
    int round = 0;
    bool painted = false, resultsShown = false;

    hotkey.onActivate = [&] {
        const bool cold = round <= kRounds; // rounds 1 to k cold, k + 1 to 2k warm
        if (cold)
            coldReader = std::make_unique<AccessibilityService>(platform.accessibility(), keys);
        controller = std::make_unique<SearchPanelController>(cold ? *coldReader : *warmReader, target, platform.desktopWindows(), search.services());
        painted = resultsShown = false;
        controller->show();
        controller->panel()->installEventFilter(&watch);
        watch.onPaint = [&, cold] {
            if (!controller || !controller->panel())
                return;
            if (!painted) {
                painted = true;
                firstPaint[cold].push_back(double(sinceTap.nsecsElapsed()) / 1e6);
            }
            if (!resultsShown && !controller->searchViewModel()->isLoading()) {
                resultsShown = true;
                resultsPaint[cold].push_back(double(sinceTap.nsecsElapsed()) / 1e6);
            }
        };
    };

    Display* display = XOpenDisplay(nullptr);
    const KeyCode ctrl = XKeysymToKeycode(display, XStringToKeysym("Control_L"));
    auto key = [&](bool down) {
        XTestFakeKeyEvent(display, ctrl, down ? True : False, CurrentTime);
        XFlush(display);
    };
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        if (controller)
            controller->dismiss();
        if (round == 2 * kRounds) {
            std::printf("second tap → panel over %s   first paint   results painted   (median of %d, ms)\n",
                        qPrintable(target->localizedName.value_or(QStringLiteral("?"))), kRounds);
            std::printf("cold (new reader)            %8.1f        %8.1f\n", median(firstPaint[1]), median(resultsPaint[1]));
            std::printf("warm (cached reading)        %8.1f        %8.1f\n", median(firstPaint[0]), median(resultsPaint[0]));
            // Each round must have shown a panel and its items, or nothing was measured.
            bool whole = true;
            for (int cold : {0, 1})
                whole = whole && int(firstPaint[cold].size()) == kRounds && int(resultsPaint[cold].size()) == kRounds;
            app.exit(whole ? 0 : 1);
            return;
        }
        ++round;
        key(true);
        key(false);
        key(true);
        sinceTap.start();
        key(false);
    });
    // The keyboard is watched and the front application known once the
    // platform has said whether Kestrio may read other applications.
    platform.accessibility().afterTrustIsKnown(&app, [&] {
        if (auto* x11 = dynamic_cast<X11Windows*>(&platform.windowDirectory()))
            x11->waitForFirstReading(5000);
        target = platform.accessibility().frontmostApplication();
        if (!target || !hotkey.start()) {
            std::fprintf(stderr, "needs an active application and the keyboard\n");
            app.exit(1);
            return;
        }
        tick.start(700);
    });
    return app.exec();
}
