#pragma once

#include "menu/menuitem.h"
#include "platform/runningapplication.h"

#include <QList>
#include <QObject>
#include <QThreadPool>

#include <functional>
#include <mutex>
#include <optional>

class Accessibility;
class Clock;
struct KeyWords;
struct MenuNode;

// The last complete reading of one application's menus.
struct CachedMenuItems {
    QList<MenuItem> items;
    double timestamp = 0; // wall-clock seconds when the walk finished
    qint32 pid = 0;
    std::optional<quint64> window; // the window whose menu bar was read, where the platform knows it
};

// Turns another application's menu bar into a flat list of menu items,
// keeping the last complete reading for a short while. Readings and presses
// wait on other applications, so they run on a pool of this reader's own,
// wide enough that readings stuck on frozen applications never hold up a new
// one; the reader waits for them before it goes.
class AccessibilityService {
public:
    // Readings and presses at once; a frozen application holds one for its time-outs.
    static constexpr int kMaxConcurrent = 16;

    // `keys` writes the items' shortcuts.
    AccessibilityService(Accessibility& accessibility, const KeyWords& keys);
    AccessibilityService(Accessibility& accessibility, const KeyWords& keys, const Clock& wallClock);
    ~AccessibilityService();
    AccessibilityService(const AccessibilityService&) = delete;
    AccessibilityService& operator=(const AccessibilityService&) = delete;

    const double cacheTTL = 2.0;

    // Every command of the target's (or else the frontmost application's)
    // menus, depth first. Never fails: problems give a shorter or empty list.
    // Blocking; safe to call from several threads at once.
    // With `emptySubmenus`, reads afresh and adds the paths of submenus that
    // held no command (menus an application fills only when opened).
    QList<MenuItem> getMenuItems(const std::optional<RunningApplication>& target, QStringList* emptySubmenus = nullptr);
    // The same on the pool: `done` runs on the UI thread with the items,
    // unless `context` is gone by then.
    void readMenuItems(const std::optional<RunningApplication>& target, QObject* context,
                       std::function<void(const QList<MenuItem>&)> done);
    // Presses the item on the pool; `pressed` runs on the UI thread when the
    // press worked on an enabled item (a use to record), unless this reader
    // is gone by then.
    void press(const MenuItem& item, std::function<void()> pressed);

    void openAccessibilitySettings();

    std::optional<CachedMenuItems> cache() const;
    // Lives exactly as long as this reader: work queued on it for later (a
    // delayed press) goes with the reader.
    QObject& lifetime() { return deliveries_; }
    Accessibility& accessibility() { return accessibility_; }

private:
    // The commands of one read menu tree, depth first: menus give their
    // titles to the paths below them, separators and untitled entries are
    // left out, disabled commands stay (marked). With `emptySubmenus`, the
    // paths of submenus that held no command are added to it.
    QList<MenuItem> menuItemsOf(const MenuTree& tree, const QString& appName, const std::optional<QString>& bundleID,
                                QStringList* emptySubmenus) const;
    void collect(const MenuNode& menu, const QStringList& path, const QString& appName,
                 const std::optional<QString>& bundleID, QList<MenuItem>& result, QStringList* emptySubmenus) const;

    Accessibility& accessibility_;
    const KeyWords& keys_;
    const Clock& clock_;
    mutable std::mutex cacheMutex_;
    std::optional<CachedMenuItems> cache_;
    QObject deliveries_; // results queued for the UI thread die with it
    QThreadPool pool_;   // declared last: waited for before anything above goes
};
