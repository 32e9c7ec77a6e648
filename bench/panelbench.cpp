// Keystroke to repaint: the time from a key press in the search field until
// the result list has painted the new ranking, for 2,000 and 20,000 items.
// Types "findnext" a key at a time, then erases it, several rounds.
#include "base/platformwords.h"
#include "bench/samples.h"
#include "menu/accessibilityservice.h"
#include "platform/fake/fakeaccessibility.h"
#include "platform/fake/fakesysteminfo.h"
#include "search/searchview.h"
#include "search/searchviewmodel.h"
#include "search/usagetracker.h"
#include "support/quietsearch.h"
#include "telemetry/analyticsservice.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListView>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <random>

namespace {

QList<MenuItem> makeItems(int count)
{
    static const QStringList menus{"File", "Edit", "View", "Insert", "Format", "Tools", "Table", "Window", "Help"};
    static const QStringList words{"New", "Open", "Save", "Export", "Print", "Find", "Next", "Replace", "Zoom", "Insert",
                                   "Table", "Row", "Column", "Image", "Text", "Style", "Bold", "Font", "Page", "Layout",
                                   "Format", "Paragraph", "Spelling", "Options", "Window", "Help", "About", "Merge"};
    std::mt19937 random(7);
    auto pick = [&](const QStringList& l) { return l[int(random() % quint32(l.size()))]; };
    QList<MenuItem> items;
    for (int i = 0; i < count; ++i) {
        QStringList path{pick(menus)};
        if (random() % 2)
            path << pick(words) + u' ' + pick(words);
        path << pick(words) + u' ' + pick(words);
        items.append(MenuItem{QUuid::createUuid(), path.last(), path,
                              random() % 3 ? std::optional<QString>() : QStringLiteral("Ctrl+Shift+S"), true, "Bench", "org.bench",
                              nullptr});
    }
    return items;
}

// Notes when the window has drawn its changed widgets (the field always
// changes; the list, when the ranking did, in the same update).
struct PaintWatch : QObject {
    bool painted = false;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::UpdateRequest)
            painted = true;
        return false;
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    std::printf("%8s %12s %12s %12s  (keystroke → list repainted, %s)\n", "items", "median ms", "p90 ms", "max ms",
                qPrintable(QGuiApplication::platformName()));
    for (int count : smokeRun() ? std::vector<int>{200} : std::vector<int>{2000, 20000}) {
        FakeSystemInfo system;
        QuietSearch search(system);
        FakeAccessibility ax;
        AccessibilityService reader(ax, PlatformWords::linuxDesktop().keys);
        SearchViewModel model(reader, RunningApplication{1, "Bench", "org.bench"}, [] {},
                              search.services([](const MenuItem&) { return true; }));
        while (model.isLoading())
            QCoreApplication::processEvents();
        model.setMenuItems(makeItems(count));
        SearchView view(model);
        view.resize(600, 400);
        view.show();
        if (!QTest::qWaitForWindowExposed(&view))
            return 1;
        PaintWatch watch;
        view.installEventFilter(&watch);

        std::vector<double> ms;
        int unpainted = 0;
        auto press = [&](auto&& type) {
            watch.painted = false;
            QElapsedTimer timer;
            timer.start();
            type();
            while (!watch.painted && timer.elapsed() < 5000)
                QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            if (!watch.painted)
                ++unpainted;
            ms.push_back(double(timer.nsecsElapsed()) / 1e6);
        };
        for (int round = 0; round < rounds(5); ++round) {
            for (char c : std::string("findnext"))
                press([&] { QTest::keyClick(view.searchField(), c); });
            for (int i = 0; i < 8; ++i)
                press([&] { QTest::keyClick(view.searchField(), Qt::Key_Backspace); });
        }
        std::sort(ms.begin(), ms.end());
        std::printf("%8d %12.2f %12.2f %12.2f\n", count, ms[ms.size() / 2], ms[ms.size() * 9 / 10], ms.back());
        if (unpainted > 0) {
            std::fprintf(stderr, "%d keystrokes never repainted the list\n", unpainted);
            return 1;
        }
    }
    return 0;
}
