// Opens the search panel over the active application, as the hotkey would,
// and reports what the panel shows as JSON lines on standard output.
//   kestrio-panel-harness [--delay-reading MS]
#include "base/platformwords.h"
#include "menu/accessibilityservice.h"
#include "platform/accessibility.h"
#include "platform/desktopwindows.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/linuxplatform.h"
#include "platform/linux/x11/x11windows.h"
#include "search/resultlistmodel.h"
#include "search/searchpanel.h"
#include "search/searchpanelcontroller.h"
#include "search/searchview.h"
#include "search/searchviewmodel.h"
#include "support/quietsearch.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QThread>
#include <QTimer>

#include <cstdio>

namespace {

// Reads menus only after a pause, so that the loading state can be seen.
class SlowAccessibility final : public Accessibility {
public:
    SlowAccessibility(Accessibility& real, int delayMs) : real_(real), delayMs_(delayMs) {}
    std::optional<MenuTree> readMenus(qint32 pid, std::optional<quint64> window) override
    {
        QThread::msleep(ulong(delayMs_));
        return real_.readMenus(pid, window);
    }
    std::optional<bool> isEnabled(const MenuHandleRef& item) override { return real_.isEnabled(item); }
    bool press(const MenuHandleRef& item) override { return real_.press(item); }
    bool isProcessTrusted() override { return real_.isProcessTrusted(); }
    void afterTrustIsKnown(QObject* context, std::function<void()> then) override
    {
        real_.afterTrustIsKnown(context, std::move(then));
    }
    void askTrust(QObject* context, std::function<void(bool)> answered) override
    {
        real_.askTrust(context, std::move(answered));
    }
    void requestTrust() override { real_.requestTrust(); }
    std::optional<RunningApplication> frontmostApplication() override { return real_.frontmostApplication(); }
    void openAccessibilitySettings() override { real_.openAccessibilitySettings(); }

private:
    Accessibility& real_;
    int delayMs_;
};

void report(const QJsonObject& state)
{
    std::printf("%s\n", QJsonDocument(state).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    LinuxPlatform platform; // the backends of this session
    app.setQuitOnLastWindowClosed(false);
    const QStringList args = app.arguments();
    const int delay = args.contains("--delay-reading") ? args.value(args.indexOf("--delay-reading") + 1).toInt() : 0;
    SlowAccessibility ax(platform.accessibility(), delay);
    AccessibilityService reader(ax, PlatformWords::linuxDesktop().keys);
    // Opened the moment it starts: the desktop's windows must have been read once.
    if (auto* x11 = dynamic_cast<X11Windows*>(&platform.windowDirectory()))
        x11->waitForFirstReading(5000);
    const std::optional<RunningApplication> target = ax.frontmostApplication();
    QuietSearch search(platform.systemInfo());
    SearchPanelController controller(reader, target, platform.desktopWindows(), search.services());
    controller.show();
    if (!controller.panel())
        return 1;

    SearchViewModel* model = controller.searchViewModel();
    SearchView* view = controller.searchView();
    auto describe = [&] {
        if (!controller.panel()) {
            report({{"dismissed", true}});
            QTimer::singleShot(1500, &app, &QApplication::quit); // the press comes 0.1 s later
            return;
        }
        QJsonArray rows;
        for (int r = 0; r < std::min(5, view->results()->rowCount()); ++r) {
            const QModelIndex i = view->results()->index(r);
            rows.append(QJsonArray{i.data(ResultListModel::TitleRole).toString(),
                                   i.data(ResultListModel::BreadcrumbRole).toString(),
                                   i.data(ResultListModel::ShortcutRole).toString()});
        }
        const char* body[] = {"loading", "noMatch", "results"};
        report({{"body", body[int(view->body())]},
                {"query", model->searchText()},
                {"selected", model->selectedIndex()},
                {"rows", rows},
                {"visible", controller.panel()->isVisible()},
                {"focus", view->searchField()->hasFocus()},
                {"footer", view->footerText()}});
    };
    // Reported after the view has updated.
    auto later = [&] { QTimer::singleShot(0, &app, describe); };
    QObject::connect(model, &SearchViewModel::isLoadingChanged, &app, later);
    QObject::connect(model, &SearchViewModel::searchTextChanged, &app, later);
    QObject::connect(model, &SearchViewModel::selectedIndexChanged, &app, later);
    QObject::connect(controller.panel(), &QObject::destroyed, &app, later);
    QTimer::singleShot(300, &app, describe);
    return app.exec();
}
