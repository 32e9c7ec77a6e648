#include "app/appdelegate.h"

#include "app/aboutview.h"
#include "app/desktopshortcutpanel.h"
#include "app/onboardingview.h"
#include "base/notificationhub.h"
#include "base/settingsstore.h"
#include "base/timers.h"
#include "buildconfig.h"
#include "hotkey/hotkeyservice.h"
#include "platform/accessibility.h"
#include "platform/desktopwindows.h"
#include "platform/workspace.h"
#include "search/searchpanel.h"
#include "search/searchpanelcontroller.h"
#include "search/searchviewmodel.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/appinfo.h"

#include <QApplication>
#include <QLayout>

AppDelegate::AppDelegate(Services services, QObject* parent)
    : QObject(parent),
      services_(std::move(services)),
      accessibilityService_(services_.accessibility, services_.words.keys),
      windows_(services_.windows)
{
}

AppDelegate::~AppDelegate()
{
    searchPanelController_.reset();
}

void AppDelegate::setSearchServices(const SearchServices& services)
{
    searchServices_ = std::make_unique<SearchServices>(services);
}

void AppDelegate::applicationDidFinishLaunching()
{
    // Several steps ask whether other applications may be read, which the
    // platform finds out without holding up the event loop: they run once it
    // knows (at once where it always does).
    services_.accessibility.afterTrustIsKnown(this, [this] { startUp(); });
}

void AppDelegate::startUp()
{
    // 1. No window but the onboarding and the settings stays from before the start.
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window != windows_.welcome() && window != windows_.settings() && window->isVisible())
            window->close();
    }
    // 2. Usage events and crash reports, only when the user opted in.
    services_.analytics.start();
    // 3.
    setupStatusItem();
    // 4.
    setupHotkeyService();
    // 5.
    startWorkspaceTracking();
    // 6.
    observeUpdateAvailability();
    // 7.
    checkFirstLaunch();
    services_.timers.after(kTrayGraceMs, this, [this] { checkTray(); });
    // 8. The automatic update check, a little later, without waiting for it.
    services_.timers.after(kUpdateCheckDelayMs, this, [this] {
        if (services_.checkForUpdatesAutomatically)
            services_.checkForUpdatesAutomatically();
    });
}

void AppDelegate::setupStatusItem()
{
    statusItem_ = std::make_unique<StatusItem>(services_.words, StatusItem::Actions{
        [this] { toggleSearchPanel(); },
        [this] { openSettings(); },
        [this] { openAccessibilitySettings(); },
        [this] { openUpdateDownload(); },
        [this] { openAbout(); },
        [this] { quitApp(); },
        [this] { menuWillOpen(); },
    });
    rebuildStatusMenu();
    updateStatusItemVisibility();
    connect(&services_.notifications, &NotificationHub::menuBarIconVisibilityChanged, this,
            &AppDelegate::updateStatusItemVisibility);
}

void AppDelegate::updateStatusItemVisibility()
{
    statusItem_->setVisible(!services_.settings.hideMenuBarIcon());
}

void AppDelegate::rebuildStatusMenu()
{
    const HotkeyService& hotkey = services_.hotkey;
    statusItem_->rebuild(StatusItem::State{
        hotkey.isActive(),
        hotkey.keyboardAccess(),
        pendingUpdate_ ? std::optional<QString>(pendingUpdate_->latestVersion) : std::nullopt,
        bool(services_.startUpdate),
    });
}

void AppDelegate::menuWillOpen()
{
    refreshLastActiveApp();
}

void AppDelegate::setupHotkeyService()
{
    HotkeyService& hotkey = services_.hotkey;
    QPointer<AppDelegate> self(this);
    hotkey.onActivate = [self] {
        if (self)
            self->toggleSearchPanel();
    };
    hotkey.start();
    // Subscribing delivers the current value first, then every change.
    connect(&hotkey, &HotkeyService::isActiveChanged, this, &AppDelegate::rebuildStatusMenu);
    rebuildStatusMenu();
    connect(&services_.notifications, &NotificationHub::hotkeyModeChanged, this, &AppDelegate::reloadHotkeyMode);
    connect(&services_.notifications, &NotificationHub::analyticsOptInChanged, this, &AppDelegate::applyAnalyticsOptIn);
}

void AppDelegate::applyAnalyticsOptIn(bool enabled)
{
    if (enabled) {
        services_.analytics.start();
        return;
    }
    services_.analytics.stop(); // reports on their way finish by themselves: no waiting here
    // What a crash left for the next start was agreed to under the opt-in that ends now.
    services_.analytics.discardPendingCrashReports();
}

void AppDelegate::startWorkspaceTracking()
{
    refreshLastActiveApp();
    connect(&services_.workspace, &Workspace::applicationActivated, this, &AppDelegate::refreshLastActiveApp);
    services_.workspace.startWatching();
}

void AppDelegate::toggleFromCommand(const QString& activationToken)
{
    if (!activationToken.isEmpty())
        services_.windows.setActivationToken(activationToken);
    toggleSearchPanel();
}

void AppDelegate::refreshLastActiveApp()
{
    const std::optional<RunningApplication> front = services_.workspace.frontmostApplication();
    if (!front)
        return;
    // Kestrio never searches itself.
    const bool self = front->processIdentifier == QCoreApplication::applicationPid()
        || front->bundleIdentifier == services_.ownBundleIdentifier;
    if (!self)
        lastActiveApp_ = front;
}

void AppDelegate::observeUpdateAvailability()
{
    connect(&services_.notifications, &NotificationHub::updateAvailable, this, &AppDelegate::updateOffered);
}

void AppDelegate::updateOffered(const UpdateCheckResult& update)
{
    pendingUpdate_ = update;
    rebuildStatusMenu();
    statusItem_->showUpdateOffered();
}

void AppDelegate::checkFirstLaunch()
{
    if (services_.settings.hasLaunchedBefore() && services_.accessibility.isProcessTrusted())
        return;
    showOnboarding();
    services_.settings.setBool(SettingsKey::hasLaunchedBefore, true);
}

bool AppDelegate::hasTray() const
{
    return !services_.trayAvailable || services_.trayAvailable();
}

void AppDelegate::checkTray()
{
    // Without a tray the icon and its menu are nowhere to be seen: say so
    // once, in the welcome, with what the user can do about it.
    if (hasTray() || services_.settings.hideMenuBarIcon() || services_.settings.boolValue(SettingsKey::noTrayNoticeShown))
        return;
    showOnboarding();
    if (onboardingView_)
        onboardingView_->showNoTrayNotice();
    services_.settings.setBool(SettingsKey::noTrayNoticeShown, true);
}

void AppDelegate::toggleSearchPanel()
{
    if (searchPanelController_ && searchPanelController_->panel() && searchPanelController_->panel()->isVisible()) {
        searchPanelController_->dismiss();
        return;
    }
    if (!services_.accessibility.isProcessTrusted()) {
        showOnboarding();
        return;
    }
    if (!lastActiveApp_) {
        refreshLastActiveApp();
        // A panel over no application would list nothing and stay empty.
        if (!lastActiveApp_ && !frontWait_) {
            openOnceTheFrontIsKnown();
            return;
        }
    }
    openSearchPanel();
}

void AppDelegate::openOnceTheFrontIsKnown()
{
    auto* waiting = new QObject(this);
    frontWait_ = waiting;
    // Whichever comes first: word of the front application, or the wait's end.
    auto open = [this, waiting] {
        if (frontWait_ != waiting)
            return;
        openSearchPanel();
    };
    connect(&services_.workspace, &Workspace::applicationActivated, waiting, [this, open] {
        if (lastActiveApp_)
            open();
    });
    services_.timers.after(kFrontWaitMs, waiting, open);
}

void AppDelegate::openSearchPanel()
{
    // A second toggle while waiting opens at once; the wait is over.
    if (frontWait_)
        frontWait_->deleteLater();
    frontWait_ = nullptr;
    const SearchServices search = searchServices_ ? *searchServices_ : SearchServices{&services_.usage, &services_.analytics, {}};
    auto controller = std::make_unique<SearchPanelController>(accessibilityService_, lastActiveApp_, services_.windows, search);
    controller->show();
    searchPanelController_ = std::move(controller); // the previous one goes, with its panel
    services_.analytics.track(QStringLiteral("search_opened"),
                              {{"active_app_bundle_id",
                                lastActiveApp_ ? lastActiveApp_->bundleIdentifier.value_or(QStringLiteral("unknown"))
                                               : QStringLiteral("unknown")}});
}

void AppDelegate::reloadHotkeyMode()
{
    const std::optional<QString> stored = services_.settings.hotkeyModeText();
    HotkeyService& hotkey = services_.hotkey;
    hotkey.setMode(hotkeyModeFromRawValue(stored));
    if (stored == QLatin1String("customShortcut")) {
        // Stored as it was read: written again, a hand-edited value might not
        // read the same (the stored form has room for more than Kestrio keeps).
        if (const std::optional<KeyChord> shortcut = loadCustomShortcut(services_.settings)) {
            hotkey.customShortcut = shortcut;
            if (hotkey.mode() == HotkeyMode::customShortcut) {
                hotkey.stop();
                hotkey.start();
            }
        }
    }
    // Chosen in Kestrio just now: the desktop's own shortcut follows.
    hotkey.applyDesktopShortcutChoice();
    services_.analytics.track(QStringLiteral("settings_changed"), {{"setting_key", "hotkeyMode"}});
}

void AppDelegate::openAccessibilitySettings()
{
    accessibilityService_.openAccessibilitySettings();
}

void AppDelegate::quitApp()
{
    if (services_.terminate)
        services_.terminate();
}

void AppDelegate::applicationWillTerminate()
{
    services_.analytics.stopAtQuit(); // only when started: flushes crash reports for at most 2 s
}

bool AppDelegate::applicationShouldHandleReopen()
{
    // Without a tray there is no icon to click either.
    if (services_.settings.hideMenuBarIcon() || !hasTray())
        openSettings();
    return false;
}

void AppDelegate::openSettings()
{
    windows_.showSettings([this]() -> QWidget* { return services_.settingsView ? services_.settingsView() : new QWidget; });
}

void AppDelegate::openAbout()
{
    windows_.showAbout([] {
        const QUrl site(QStringLiteral("https://%1/").arg(QStringLiteral(KESTRIO_WEBSITE_HOST)));
        return new AboutView(site, site.resolved(QUrl(QStringLiteral("apps/kestrio/"))));
    });
}

void AppDelegate::openUpdateDownload()
{
    if (!pendingUpdate_)
        return;
    services_.analytics.track(QStringLiteral("update_install_started"),
                              {{"current_version", appVersion()}, {"latest_version", pendingUpdate_->latestVersion}});
    if (services_.startUpdate)
        services_.startUpdate(pendingUpdate_->downloadURL, pendingUpdate_->latestVersion);
}

void AppDelegate::showOnboarding()
{
    // One welcome at a time: asking again brings it forward.
    if (windows_.bringWelcomeForward())
        return;
    QPointer<AppDelegate> self(this);
    // Where keys cannot reach Kestrio, the welcome sets up the desktop's shortcut too.
    DesktopShortcutPanel* shortcut = nullptr;
    if (services_.hotkey.desktopShortcutSetup() != DesktopShortcutSetup::notNeeded)
        shortcut = new DesktopShortcutPanel(services_.words, services_.hotkey, services_.settings,
                                            services_.notifications);
    auto* view = new OnboardingView(services_.words, accessibilityService_, services_.timers, [self] {
        if (self)
            self->windows_.closeWelcome();
    }, services_.hotkey.keyboardAccess(), shortcut);
    onboardingView_ = view;
    const int extra = shortcut ? shortcut->sizeHint().height() + view->layout()->spacing() : 0;
    // Closed in any way, it goes, and its permission poll with it.
    windows_.showWelcome(view, QSize(480, 360 + extra));
}
