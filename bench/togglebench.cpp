// From `kestrio --toggle` (what a desktop shortcut runs) to the search panel on
// screen: plays the running instance, starts the real command as the desktop
// would, and times the panel's first paint and the paint that shows the
// results, the command's own start-up included. For Wayland sessions, where
// the toggle is how the panel opens; it works on X11 as well.
#include "app/kestrioapp.h"
#include "base/platformwords.h"
#include "bench/paintwatch.h"
#include "bench/samples.h"
#include "menu/accessibilityservice.h"
#include "platform/accessibility.h"
#include "platform/desktopwindows.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/linuxplatform.h"
#include "platform/workspace.h"
#include "search/searchpanel.h"
#include "search/searchpanelcontroller.h"
#include "search/searchviewmodel.h"
#include "support/quietsearch.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>

#include <cstdio>

int main(int argc, char** argv)
{
    KestrioApp app(argc, argv);
    LinuxPlatform platform; // the backends of this session
    if (argc < 2) {
        std::fprintf(stderr, "usage: kestrio-toggle-bench PATH-OF-KESTRIO\n");
        return 2;
    }
    const QString kestrio = QString::fromLocal8Bit(argv[1]);
    if (!app.claimSingleInstance()) {
        std::fprintf(stderr, "another Kestrio runs in this session\n");
        return 1;
    }
    Workspace& workspace = platform.workspace();
    workspace.startWatching();

    const int kRounds = rounds(12);
    AccessibilityService reader(platform.accessibility(), PlatformWords::linuxDesktop().keys);
    QuietSearch search(platform.systemInfo());
    std::unique_ptr<SearchPanelController> controller;
    std::optional<RunningApplication> target; // learned once: later the bench's own panel is in front
    PaintWatch watch;
    QElapsedTimer sinceCommand;
    std::vector<double> firstPaint, resultsPaint;
    bool painted = false, resultsShown = false;
    int round = 0;

    QObject::connect(&app, &KestrioApp::toggleRequested, [&](const QString& token) {
        platform.desktopWindows().setActivationToken(token);
        controller = std::make_unique<SearchPanelController>(reader, target, platform.desktopWindows(), search.services());
        painted = resultsShown = false;
        controller->show();
        controller->panel()->installEventFilter(&watch);
        watch.onPaint = [&] {
            if (!controller || !controller->panel())
                return;
            if (!painted) {
                painted = true;
                firstPaint.push_back(double(sinceCommand.nsecsElapsed()) / 1e6);
            }
            if (!resultsShown && !controller->searchViewModel()->isLoading()) {
                resultsShown = true;
                resultsPaint.push_back(double(sinceCommand.nsecsElapsed()) / 1e6);
            }
        };
    });

    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        if (controller)
            controller->dismiss();
        if (round == kRounds) {
            std::printf("kestrio --toggle → panel over %s   (%zu rounds, ms)\n",
                        target && target->localizedName ? qPrintable(*target->localizedName) : "nothing",
                        firstPaint.size());
            std::printf("first paint      median %7.1f   largest %7.1f\n", median(firstPaint), largest(firstPaint));
            std::printf("results painted  median %7.1f   largest %7.1f\n", median(resultsPaint), largest(resultsPaint));
            // Every round must have opened a panel over the application, or nothing was measured.
            const bool whole = target && int(firstPaint.size()) == kRounds && int(resultsPaint.size()) == kRounds;
            app.exit(whole ? 0 : 1);
            return;
        }
        if (++round == 1)
            target = workspace.frontmostApplication();
        sinceCommand.start();
        QProcess::startDetached(kestrio, {QStringLiteral("--toggle")});
    });
    // The first round waits for the compositor to tell which window is in front.
    QTimer::singleShot(1500, [&] { tick.start(1000); });
    return app.exec();
}
