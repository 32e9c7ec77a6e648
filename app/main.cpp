// Kestrio: find and run any menu command of the application in front by typing.
//
// The program's root: it makes the platform's backends and the long-lived
// services, once, and hands them to what uses them.
#include "app/appdelegate.h"
#include "app/appearancetheme.h"
#include "app/kestrioapp.h"
#include "app/programservices.h"
#include "app/settingsview.h"
#include "base/platformwords.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/linuxplatform.h"
#include "platform/remotecontrol.h"
#include "telemetry/appinfo.h"

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

    LinuxPlatform platform;
    const PlatformWords& words = PlatformWords::linuxDesktop();
    ProgramServices services(platform.hotkeys(), platform.systemInfo(), platform.updatePackaging(), words);
    Accessibility& accessibility = platform.accessibility();

    AppearanceTheme::apply(services.settings.appearance());
    AppDelegate* self = nullptr;
    AppDelegate delegate(AppDelegate::Services{
        services.settings,
        services.hotkey,
        services.analytics,
        services.usage,
        accessibility,
        platform.desktopWindows(),
        platform.workspace(),
        services.notifications,
        services.timers,
        words,
        [] { QCoreApplication::quit(); },
        [&services] { services.updateCheck.checkAutomaticallyIfNeeded(); },
        [&services](const QUrl& url, const QString& version) { services.selfUpdater.startUpdate(url, version); },
        QStringLiteral("kestrio"),
        [&self, &services, &platform, &words]() -> QWidget* {
            return new SettingsView(SettingsView::Services{
                services.settings,
                services.notifications,
                services.hotkey,
                self->accessibilityService(),
                services.usage,
                services.selfUpdater,
                platform.loginItem(),
                platform.keyboardLayout(),
                words,
                [&services](SettingsView::UpdateCompletion done) { services.updateCheck.checkForUpdates(std::move(done)); },
                [] { QCoreApplication::quit(); },
            });
        },
        [] { return QSystemTrayIcon::isSystemTrayAvailable(); },
    });
    self = &delegate;
    QObject::connect(&app, &KestrioApp::reopenRequested, &delegate, [&delegate] { delegate.applicationShouldHandleReopen(); });
    QObject::connect(&app, &KestrioApp::toggleRequested, &delegate, &AppDelegate::toggleFromCommand);
    platform.remoteControl().publish([&delegate](const QString& token) { delegate.toggleFromCommand(token); });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &delegate, [&delegate] { delegate.applicationWillTerminate(); });
    delegate.applicationDidFinishLaunching();
    services.selfUpdater.tidyLeftoversLater();
    if (request.kind == InstanceRequest::Kind::toggle) {
        // Started by the toggle itself: open once it is known whether the
        // menus may be read, rather than show the welcome by mistake.
        accessibility.afterTrustIsKnown(&delegate, [&delegate, token = request.activationToken] {
            delegate.toggleFromCommand(token);
        });
    }
    return app.exec();
}
