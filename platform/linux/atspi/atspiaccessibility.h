#pragma once

#include "platform/accessibility.h"
#include "platform/linux/atspi/atspiapplications.h"
#include "platform/linux/atspi/atspifocuswatch.h"
#include "platform/linux/atspi/atspibus.h"
#include "platform/linux/windows/windowdirectory.h"
#include "platform/linux/xdg/desktopentries.h"

#include <QHash>
#include <QPointer>
#include <QThreadPool>

#include <atomic>
#include <memory>
#include <mutex>

class QDBusServiceWatcher;

// Other applications' menus over AT-SPI2, the active window from the
// desktop's window directory. Whatever waits on another process (the trust check,
// naming the applications, connecting to the bus) runs on a pool of its own;
// the UI thread only reads what is known.
class AtspiAccessibility final : public Accessibility {
public:
    // How long a press waits for an error before it counts as done: an item
    // that opens a modal dialog answers only when the dialog closes.
    static constexpr int kPressReplyMs = 300;
    // Enabled states read with the menus are trusted this long; later the
    // application is asked again.
    static constexpr double kStateFreshSeconds = 1.0;

    // With `watchFocus`, the front application comes from the bus's focus
    // announcements whenever the window directory knows no active window.
    explicit AtspiAccessibility(WindowDirectory& windows, bool watchFocus = false);
    ~AtspiAccessibility() override;

    // The window's menu bar; where it has none, the one its application
    // exports on the session bus, followed by a menu button's commands.
    std::optional<MenuTree> readMenus(qint32 pid, std::optional<quint64> window = std::nullopt) override;
    std::optional<bool> isEnabled(const MenuHandleRef& item) override;
    bool press(const MenuHandleRef& item) override;
    bool isProcessTrusted() override;
    void afterTrustIsKnown(QObject* context, std::function<void()> then) override;
    void askTrust(QObject* context, std::function<void(bool)> answered) override;
    void requestTrust() override;
    std::optional<RunningApplication> frontmostApplication() override;
    void openAccessibilitySettings() override;
    void stopReadings() override { ++stops_; }

    using ApplicationInfo = AtspiApplications::Info;
    // Every application on the accessibility bus, read afresh. Waits: for the command line.
    QList<ApplicationInfo> applications();

    // The running application behind a window, named as the usage history keys it.
    std::optional<RunningApplication> runningApplication(quint64 window);
    // The same, found through the process's first top-level window, else as
    // the accessibility bus names it.
    std::optional<RunningApplication> runningApplicationOf(qint32 pid);
    // The focus announcements, where they are watched; else null.
    AtspiFocusWatch* focusWatch() const { return focusWatch_.get(); }

    // The trust check itself; waits on the bus, so it runs on the pool.
    bool checkTrust();

    // Connections of applications' own kept open for presses.
    qsizetype peerCount() const;

private:
    bool isSwitchedOn();
    void checkTrustSoon();
    void openDesktopAccessibilitySettings();
    void trustAnswered(bool trusted, int busGeneration);
    void watchBusOwner();
    QDBusConnection pressConnection(const AtspiRef& application, bool& peer);
    // An application that left the bus takes its connection along.
    void dropPeersOfGoneApplications();

    WindowDirectory& windows_;
    DesktopEntries entries_;
    AtspiBus bus_;
    QObject context_; // answers queued for the UI thread die with it
    QThreadPool pool_; // waited for before anything below goes
    AtspiApplications applications_;

    // Trust: 1 yes, 0 no, -1 not known yet. Checked on the pool, one check at a time.
    std::atomic<int> trusted_ = -1;
    std::atomic<bool> trustCheckQueued_ = false;
    std::atomic<int> stops_ = 0; // readings that began before a stop give up
    int knownBusGeneration_ = 0; // UI thread only, like the two below
    QList<std::pair<QPointer<QObject>, std::function<void()>>> trustWaiters_;
    QList<std::pair<QPointer<QObject>, std::function<void(bool)>>> trustAskers_;
    std::unique_ptr<QDBusServiceWatcher> busWatcher_;
    std::unique_ptr<AtspiFocusWatch> focusWatch_;

    mutable std::mutex peersMutex_;
    QHash<QString, std::optional<QDBusConnection>> peers_; // by application bus name
};
