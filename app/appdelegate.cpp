#include "app/appdelegate.h"


#include "app/aboutview.h"
#include "app/desktopshortcutpanel.h"
#include "base/notificationhub.h"
#include "app/onboardingview.h"
#include "base/platformwords.h"
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
#include <QBoxLayout>
#include <QMenu>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>

namespace {

QIcon resourceIcon(const char* name)
{
    return QIcon(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(name)));
}

} // namespace

AppDelegate::AppDelegate(Services services, QObject* parent)
    : QObject(parent), services_(std::move(services)), accessibilityService_(services_.accessibility)
{
}

AppDelegate::~AppDelegate()
{
    searchPanelController_.reset();
    delete onboardingWindow_;
    delete settingsWindow_;
    delete aboutWindow_;
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
        if (window != onboardingWindow_ && window != settingsWindow_ && window->isVisible())
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
    statusItem_ = std::make_unique<QSystemTrayIcon>(resourceIcon("kestrio"));
    statusItem_->setToolTip(QStringLiteral("Kestrio"));
    rebuildStatusMenu();
    updateStatusItemVisibility();
    connect(&services_.notifications, &NotificationHub::menuBarIconVisibilityChanged, this,
            &AppDelegate::updateStatusItemVisibility);
    // A left click opens the same menu, as a status item's would.
    connect(statusItem_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger && statusMenu_)
            statusMenu_->popup(QCursor::pos());
    });
}

void AppDelegate::updateStatusItemVisibility()
{
    // Qt shows the icon as soon as a tray host appears, also when none runs yet.
    statusItem_->setVisible(!services_.settings.hideMenuBarIcon());
}

void AppDelegate::rebuildStatusMenu()
{
    auto menu = std::make_unique<QMenu>();
    auto add = [&](const QString& title, void (AppDelegate::*action)(), const QKeySequence& key = {},
                   const char* icon = nullptr) {
        QAction* item = menu->addAction(title);
        connect(item, &QAction::triggered, this, action);
        if (!key.isEmpty())
            item->setShortcut(key);
        if (icon)
            item->setIcon(resourceIcon(icon));
        return item;
    };
    HotkeyService& hotkey = services_.hotkey;
    add(QStringLiteral("Search Menus…"), &AppDelegate::toggleSearchPanel);
    if (!hotkey.isActive() && hotkey.keyboardAccess() == KeyboardAccess::none) {
        // No grant helps where the session shows no keys: the settings say what does.
        menu->addSeparator();
        add(PlatformWords::current().keysUnavailableMenuRow, &AppDelegate::openSettings, {}, "warning");
    } else if (!hotkey.isActive()) {
        menu->addSeparator();
        add(PlatformWords::current().hotkeyInactiveMenuRow, &AppDelegate::openAccessibilitySettings, {}, "warning");
    }
    if (pendingUpdate_) {
        menu->addSeparator();
        QAction* download = add(QStringLiteral("Download Update — v") + pendingUpdate_->latestVersion,
                                &AppDelegate::openUpdateDownload, {}, "download");
        download->setEnabled(bool(services_.startUpdate));
    }
    menu->addSeparator();
    add(QStringLiteral("Settings…"), &AppDelegate::openSettings, QKeySequence(Qt::CTRL | Qt::Key_Comma));
    add(QStringLiteral("About Kestrio"), &AppDelegate::openAbout);
    menu->addSeparator();
    add(QStringLiteral("Quit Kestrio"), &AppDelegate::quitApp, QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(menu.get(), &QMenu::aboutToShow, this, &AppDelegate::menuWillOpen);

    statusItem_->setContextMenu(menu.get());
    statusMenu_ = std::move(menu); // the old menu goes
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

void AppDelegate::toggleOnceTheFrontIsKnown(const QString& activationToken)
{
    refreshLastActiveApp();
    if (lastActiveApp_) {
        toggleFromCommand(activationToken);
        return;
    }
    // Whichever comes first: word of the front application, or the wait's end.
    auto* waiting = new QObject(this);
    auto open = [this, waiting, activationToken] {
        if (!waiting->parent())
            return;
        waiting->setParent(nullptr);
        waiting->deleteLater();
        toggleFromCommand(activationToken);
    };
    connect(&services_.workspace, &Workspace::applicationActivated, waiting, [this, open] {
        if (lastActiveApp_)
            open();
    });
    services_.timers.after(kFrontWaitMs, waiting, open);
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
    statusItem_->setIcon(resourceIcon("kestrio-update"));
    statusItem_->setToolTip(QStringLiteral("Kestrio — update available"));
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
    showReusedWindow(settingsWindow_, QStringLiteral("Kestrio Settings"), QSize(440, 520), [this]() -> QWidget* {
        return services_.settingsView ? services_.settingsView() : new QWidget;
    });
}

void AppDelegate::openAbout()
{
    showReusedWindow(aboutWindow_, QStringLiteral("About Kestrio"), QSize(340, 420), [] {
        const QUrl site(QStringLiteral("https://%1/").arg(QStringLiteral(KESTRIO_WEBSITE_HOST)));
        return new AboutView(site, site.resolved(QUrl(QStringLiteral("apps/kestrio/"))));
    });
}

void AppDelegate::showReusedWindow(QPointer<QWidget>& window, const QString& title, QSize size,
                                   const std::function<QWidget*()>& makeContent)
{
    if (window && window->isVisible()) {
        window->raise();
        window->activateWindow();
        services_.windows.activateOwnWindow(window->winId());
        return;
    }
    delete window;
    window = makeWindow(title, size, makeContent());
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

QWidget* AppDelegate::makeWindow(const QString& title, QSize size, QWidget* content)
{
    // Titled, closable, of a fixed size, centred, kept when closed.
    auto* window = new QWidget(nullptr, Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint
                                            | Qt::CustomizeWindowHint);
    window->setWindowTitle(title);
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    auto* layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
    window->setFixedSize(size);
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        window->move(area.center() - QPoint(size.width() / 2, size.height() / 2));
    }
    window->show();
    window->raise();
    window->activateWindow();
    services_.windows.activateOwnWindow(window->winId());
    return window;
}

void AppDelegate::showOnboarding()
{
    // One welcome at a time: asking again brings it forward.
    if (onboardingWindow_ && onboardingWindow_->isVisible()) {
        onboardingWindow_->raise();
        onboardingWindow_->activateWindow();
        services_.windows.activateOwnWindow(onboardingWindow_->winId());
        return;
    }
    delete onboardingWindow_;
    QPointer<AppDelegate> self(this);
    // Where keys cannot reach Kestrio, the welcome sets up the desktop's shortcut too.
    DesktopShortcutPanel* shortcut = nullptr;
    if (services_.hotkey.desktopShortcutSetup() != DesktopShortcutSetup::notNeeded)
        shortcut = new DesktopShortcutPanel(services_.hotkey, services_.settings, services_.notifications);
    auto* view = new OnboardingView(accessibilityService_, services_.timers, [self] {
        if (!self || !self->onboardingWindow_)
            return;
        self->onboardingWindow_->close();
        self->onboardingWindow_ = nullptr;
    }, services_.hotkey.keyboardAccess(), shortcut);
    onboardingView_ = view;
    const int extra = shortcut ? shortcut->sizeHint().height() + view->layout()->spacing() : 0;
    onboardingWindow_ = makeWindow(QStringLiteral("Welcome to Kestrio"), QSize(480, 360 + extra), view);
    // Closed in any way, it goes, and its permission poll with it.
    onboardingWindow_->setAttribute(Qt::WA_DeleteOnClose, true);
}
