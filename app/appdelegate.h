#pragma once

#include "app/programwindows.h"
#include "app/statusitem.h"
#include "base/updatecheckresult.h"
#include "menu/accessibilityservice.h"
#include "platform/runningapplication.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class Accessibility;
class AnalyticsService;
class DesktopWindows;
class HotkeyService;
class NotificationHub;
class OnboardingView;
class QMenu;
class QSystemTrayIcon;
class SearchPanelController;
class SettingsStore;
class Timers;
class UsageTracker;
class Workspace;
struct PlatformWords;
struct SearchServices;

// The running program's wiring: starts every service in a fixed order,
// remembers the application the user last worked in, opens the search panel
// over it, and decides when the welcome, the tray menu's rows and the update
// offer show. The tray icon is a StatusItem, the windows ProgramWindows.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    static constexpr int kUpdateCheckDelayMs = 2000;

    // Everything the controller works with; the program passes the real ones.
    struct Services {
        SettingsStore& settings;
        HotkeyService& hotkey;
        AnalyticsService& analytics;
        UsageTracker& usage;
        Accessibility& accessibility;
        DesktopWindows& windows;
        Workspace& workspace;
        NotificationHub& notifications;
        Timers& timers;
        const PlatformWords& words;
        std::function<void()> terminate;                   // ends the program
        std::function<void()> checkForUpdatesAutomatically; // the daily check, when there is one
        std::function<void(const QUrl&, const QString&)> startUpdate; // the self-updater (address, version), when there is one
        std::optional<QString> ownBundleIdentifier;
        std::function<QWidget*()> settingsView;             // a new settings form, when there is one
        std::function<bool()> trayAvailable;                // whether the desktop shows tray icons; absent: it does
    };

    // A tray host started with the session may come up a little after Kestrio.
    static constexpr int kTrayGraceMs = 3000;
    // How long a toggle waits to learn which application is in front, when no
    // application has been in front yet, before it opens the panel anyway.
    static constexpr int kFrontWaitMs = 2000;

    explicit AppDelegate(Services services, QObject* parent = nullptr);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    void applicationWillTerminate();
    bool applicationShouldHandleReopen();

    // `kestrio --toggle` and its D-Bus twin, with the desktop's permission
    // for the panel to take the focus.
    void toggleFromCommand(const QString& activationToken);

    // Status-menu actions. Just after start the desktop may not have told yet
    // which application is in front (under Wayland it tells a moment later):
    // the panel then opens once it has, or after kFrontWaitMs, or at a second
    // toggle, whichever comes first.
    void toggleSearchPanel();
    void openAccessibilitySettings();
    void quitApp();
    void openSettings();
    void openAbout();
    void openUpdateDownload();

    // Handlers.
    void rebuildStatusMenu();
    void menuWillOpen();
    void refreshLastActiveApp();
    void reloadHotkeyMode();
    void applyAnalyticsOptIn(bool enabled);
    void updateOffered(const UpdateCheckResult& update);

    // What tests look at.
    QSystemTrayIcon* statusItem() const { return statusItem_ ? statusItem_->icon() : nullptr; }
    QMenu* statusMenu() const { return statusItem_ ? statusItem_->menu() : nullptr; }
    SearchPanelController* searchPanelController() const { return searchPanelController_.get(); }
    QWidget* onboardingWindow() const { return windows_.welcome(); }
    QWidget* settingsWindow() const { return windows_.settings(); }
    QWidget* aboutWindow() const { return windows_.about(); }
    const std::optional<RunningApplication>& lastActiveApp() const { return lastActiveApp_; }
    AccessibilityService& accessibilityService() { return accessibilityService_; }
    // Only for tests: what search panels work with, in place of the
    // program's usage history and events and the reader's own press.
    void setSearchServices(const SearchServices& services);

private:
    void startUp();
    void setupStatusItem();
    void updateStatusItemVisibility();
    void setupHotkeyService();
    void startWorkspaceTracking();
    void observeUpdateAvailability();
    void checkFirstLaunch();
    void checkTray();
    bool hasTray() const;
    void showOnboarding();
    void openSearchPanel();
    void openOnceTheFrontIsKnown();

    Services services_;
    std::unique_ptr<StatusItem> statusItem_;
    std::unique_ptr<SearchPanelController> searchPanelController_;
    AccessibilityService accessibilityService_;
    ProgramWindows windows_;
    QPointer<OnboardingView> onboardingView_;
    std::optional<RunningApplication> lastActiveApp_;
    QPointer<QObject> frontWait_; // while a toggle waits for the front application
    std::optional<UpdateCheckResult> pendingUpdate_;
    std::unique_ptr<SearchServices> searchServices_;
};
