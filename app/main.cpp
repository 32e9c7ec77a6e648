// Kestrio: find and run any menu command of the application in front by typing.
#include "app/appdelegate.h"
#include "app/appearancetheme.h"
#include "app/kestrioapp.h"
#include "base/notificationhub.h"
#include "base/settingsstore.h"
#include "app/settingsview.h"
#include "hotkey/hotkeyservice.h"
#include "platform/accessibility.h"
#include "platform/desktopwindows.h"
#include "platform/keyboardlayout.h"
#include "platform/loginitem.h"
#include "platform/remotecontrol.h"
#include "platform/workspace.h"
#include "search/usagetracker.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/appinfo.h"
#include "update/selfupdater.h"
#include "update/updatecheckservice.h"

#include <QCommandLineParser>
#include <QSystemTrayIcon>

namespace {

InstanceRequest toggleRequest()
{
    return InstanceRequest{InstanceRequest::Kind::toggle, qEnvironmentVariable("XDG_ACTIVATION_TOKEN")};
}

} // namespace

int main(int argc, char** argv)
{
    // A toggle for the running instance starts no GUI of its own: the panel
    // shows sooner.
    if (argc == 2 && qstrcmp(argv[1], "--toggle") == 0) {
        QCoreApplication client(argc, argv); // the socket sits in the user's runtime folder, whatever the program is called
        if (KestrioApp::passToRunningInstance(toggleRequest()))
            return 0;
    }
    KestrioApp app(argc, argv);
    app.setApplicationVersion(appVersion());
    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("Search and run the menu commands of the application you are working in."));
    options.addHelpOption();
    options.addVersionOption();
    const QCommandLineOption toggle(
        QStringLiteral("toggle"),
        QStringLiteral("Open the search panel over the application in front, or close it, in the running Kestrio "
                       "(started first if need be). Bind a desktop keyboard shortcut to this command where "
                       "Kestrio cannot watch the keyboard itself, as on Wayland."));
    options.addOption(toggle);
    options.process(app);
    const InstanceRequest request = options.isSet(toggle) ? toggleRequest() : InstanceRequest{};
    if (!app.claimSingleInstance(request))
        return 0;

    AppearanceTheme::apply(SettingsStore::standard().appearance());
    AppDelegate* self = nullptr;
    AppDelegate delegate(AppDelegate::Services{
        SettingsStore::standard(),
        HotkeyService::shared(),
        AnalyticsService::shared(),
        Accessibility::current(),
        DesktopWindows::current(),
        Workspace::current(),
        NotificationHub::shared(),
        [] { QCoreApplication::quit(); },
        [] { UpdateCheckService::shared().checkAutomaticallyIfNeeded(); },
        [](const QUrl& url, const QString& version) { SelfUpdater::shared().startUpdate(url, version); },
        QStringLiteral("kestrio"),
        [&self]() -> QWidget* {
            return new SettingsView(SettingsView::Services{
                SettingsStore::standard(),
                NotificationHub::shared(),
                HotkeyService::shared(),
                self->accessibilityService(),
                UsageTracker::shared(),
                SelfUpdater::shared(),
                LoginItem::current(),
                KeyboardLayout::current(),
                [](SettingsView::UpdateCompletion done) { UpdateCheckService::shared().checkForUpdates(std::move(done)); },
                [] { QCoreApplication::quit(); },
            });
        },
        [] { return QSystemTrayIcon::isSystemTrayAvailable(); },
    });
    self = &delegate;
    QObject::connect(&app, &KestrioApp::reopenRequested, &delegate, [&delegate] { delegate.applicationShouldHandleReopen(); });
    QObject::connect(&app, &KestrioApp::toggleRequested, &delegate, &AppDelegate::toggleFromCommand);
    RemoteControl::current().publish([&delegate](const QString& token) { delegate.toggleFromCommand(token); });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &delegate, [&delegate] { delegate.applicationWillTerminate(); });
    delegate.applicationDidFinishLaunching();
    SelfUpdater::shared().tidyLeftoversLater();
    if (request.kind == InstanceRequest::Kind::toggle) {
        // Started by the toggle itself: open once it is known whether the
        // menus may be read, rather than show the welcome by mistake.
        Accessibility::current().afterTrustIsKnown(&delegate, [&delegate, token = request.activationToken] {
            delegate.toggleOnceTheFrontIsKnown(token);
        });
    }
    return app.exec();
}
