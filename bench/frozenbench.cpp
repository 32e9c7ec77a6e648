// With a stopped (frozen) application on the desktop, measures what the user
// feels: how long the main thread goes without running while the focus moves
// between the frozen and a live application, how long a double tap takes to
// show the panel over either, and how long until the live one's menus show.
//   kestrio-frozen-bench FROZEN_PID LIVE_PID
// Runs the real controller with the real platform backends, a double tap of
// Alt ("doubleTapOption") injected with XTest.
#include "app/appdelegate.h"
#include "base/notificationhub.h"
#include "base/platformwords.h"
#include "base/settingsstore.h"
#include "base/timers.h"
#include "bench/paintwatch.h"
#include "bench/samples.h"
#include "hotkey/hotkeymode.h"
#include "hotkey/hotkeyservice.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/desktopwindows.h"
#include "platform/hotkeyplatform.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/linuxplatform.h"
#include "platform/workspace.h"
#include "search/searchpanel.h"
#include "search/searchpanelcontroller.h"
#include "search/searchviewmodel.h"
#include "search/usagetracker.h"
#include "support/quietsearch.h"
#include "telemetry/analyticsservice.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

// Steps that run one after another on the event loop, each after a delay.
class Script : public QObject {
public:
    void then(int delayMs, std::function<void()> step) { steps_.push_back({delayMs, std::move(step)}); }
    void run()
    {
        if (next_ >= steps_.size())
            return;
        const auto& [delay, step] = steps_[next_++];
        QTimer::singleShot(delay, this, [this, step] {
            step();
            run();
        });
    }

private:
    std::vector<std::pair<int, std::function<void()>>> steps_;
    size_t next_ = 0;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    LinuxPlatform platform; // the backends of this session
    app.setQuitOnLastWindowClosed(false);
    if (argc != 3) {
        std::fprintf(stderr, "usage: kestrio-frozen-bench FROZEN_PID LIVE_PID\n");
        return 64;
    }
    const qint32 frozenPid = QByteArray(argv[1]).toInt();
    const qint32 livePid = QByteArray(argv[2]).toInt();

    QTemporaryDir home;
    SettingsStore settings(home.filePath(QStringLiteral("settings.json")));
    settings.setBool(SettingsKey::hasLaunchedBefore, true);
    saveHotkeyMode(HotkeyMode::doubleTapAlt, settings);
    HotkeyService hotkey(platform.hotkeys(), settings, Clock::monotonic());
    NotificationHub hub;
    QtTimers timers;
    QuietSearch search(platform.systemInfo());
    AppDelegate delegate(AppDelegate::Services{settings, hotkey, search.analytics, search.usage, platform.accessibility(),
                                               platform.desktopWindows(), platform.workspace(), hub, timers,
                                               PlatformWords::linuxDesktop(), [] {}, {}, {},
                                               QStringLiteral("kestrio"), {}, {}});
    delegate.applicationDidFinishLaunching();

    // The main thread's pulse: a 5 ms timer, and the longest wait between two ticks.
    QElapsedTimer pulse;
    double longestGap = 0;
    bool measuringGaps = false;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const double gap = double(pulse.nsecsElapsed()) / 1e6;
        pulse.start();
        if (measuringGaps)
            longestGap = std::max(longestGap, gap);
    });
    pulse.start();
    ticker.start(5);

    Display* display = XOpenDisplay(nullptr);
    const KeyCode alt = XKeysymToKeycode(display, XStringToKeysym("Alt_L"));
    QElapsedTimer sinceTap;
    auto doubleTap = [&] {
        auto key = [&](bool down) {
            XTestFakeKeyEvent(display, alt, down ? True : False, CurrentTime);
            XFlush(display);
        };
        key(true);
        key(false);
        key(true);
        sinceTap.start();
        key(false);
    };
    auto activate = [&](qint32 pid) { platform.desktopWindows().activate(RunningApplication{pid, {}, {}}); };

    PaintWatch watch;
    std::vector<double> frozenPanel, livePanel, liveResults, tapGaps;
    auto watchPanel = [&](std::vector<double>* firstPaint, std::vector<double>* results) {
        SearchPanelController* controller = delegate.searchPanelController();
        if (!controller || !controller->panel())
            return;
        controller->panel()->installEventFilter(&watch);
        auto painted = std::make_shared<bool>(false), shown = std::make_shared<bool>(false);
        watch.onPaint = [&delegate, firstPaint, results, painted, shown, &sinceTap] {
            SearchPanelController* c = delegate.searchPanelController();
            if (!c)
                return;
            const double ms = double(sinceTap.nsecsElapsed()) / 1e6;
            if (!*painted) {
                *painted = true;
                firstPaint->push_back(ms);
            }
            if (results && !*shown && !c->searchViewModel()->isLoading() && !c->searchViewModel()->menuItems().isEmpty()) {
                *shown = true;
                results->push_back(ms);
            }
        };
    };
    std::vector<double>* pendingFirst = nullptr;
    std::vector<double>* pendingResults = nullptr;
    auto watchActivations = [&] {
        hotkey.onActivate = [&] {
            delegate.toggleSearchPanel();
            watchPanel(pendingFirst, pendingResults);
        };
    };

    Script script;
    // Focus moves 12 times between the frozen and the live application.
    const int switches = smokeRun() ? 2 : 12;
    script.then(0, [&] {
        watchActivations();
        measuringGaps = true;
    });
    for (int i = 0; i < switches; ++i)
        script.then(150, [&, i] { activate(i % 2 == 0 ? frozenPid : livePid); });
    double focusGap = 0;
    script.then(400, [&] {
        measuringGaps = false;
        focusGap = longestGap;
    });
    const int kRounds = rounds(5);
    for (int round = 0; round < kRounds; ++round) {
        script.then(300, [&] { activate(frozenPid); });
        script.then(400, [&] {
            pendingFirst = &frozenPanel;
            pendingResults = nullptr;
            longestGap = 0;
            measuringGaps = true;
            doubleTap();
        });
        script.then(1200, [&] {
            tapGaps.push_back(longestGap);
            measuringGaps = false;
            if (delegate.searchPanelController())
                delegate.searchPanelController()->dismiss();
        });
        script.then(300, [&] { activate(livePid); });
        script.then(400, [&] {
            pendingFirst = &livePanel;
            pendingResults = &liveResults;
            doubleTap();
        });
        script.then(1200, [&] {
            if (delegate.searchPanelController())
                delegate.searchPanelController()->dismiss();
        });
    }
    script.then(100, [&] {
        std::printf("frozen application: pid %d (stopped); live application: pid %d\n", frozenPid, livePid);
        std::printf("longest main-thread gap, focus switched %2d times:   %7.1f ms (5 ms timer)\n", switches, focusGap);
        std::printf("second tap → panel's first paint, frozen app:       median %7.1f ms, max %7.1f ms (%zu of %d)\n",
                    median(frozenPanel), largest(frozenPanel), frozenPanel.size(), kRounds);
        std::printf("longest main-thread gap after the tap, frozen app:  median %7.1f ms, max %7.1f ms\n",
                    median(tapGaps), largest(tapGaps));
        std::printf("second tap → panel's first paint, live app:         median %7.1f ms, max %7.1f ms (%zu of %d)\n",
                    median(livePanel), largest(livePanel), livePanel.size(), kRounds);
        std::printf("second tap → live app's menu items painted:         median %7.1f ms, max %7.1f ms (%zu of %d)\n",
                    median(liveResults), largest(liveResults), liveResults.size(), kRounds);
        std::fflush(stdout);
        // Each round must have shown both panels and the live menus, or nothing was measured.
        const bool whole = int(frozenPanel.size()) == kRounds && int(livePanel.size()) == kRounds
            && int(liveResults.size()) == kRounds;
        app.exit(whole ? 0 : 1);
    });
    // The controller starts once the platform has said whether Kestrio may
    // read other applications; the script goes once it has.
    platform.accessibility().afterTrustIsKnown(&app, [&] { QTimer::singleShot(300, &script, [&] { script.run(); }); });
    return app.exec();
}
