#pragma once

#include "menu/menuitem.h"
#include "platform/runningapplication.h"

#include <QList>
#include <QMutex>

#include <optional>

class Accessibility;
class Clock;

// The last complete reading of one application's menus.
struct CachedMenuItems {
    QList<MenuItem> items;
    double timestamp = 0; // wall-clock seconds when the walk finished
    qint32 pid = 0;
};

// Turns another application's menu bar into a flat list of menu items,
// keeping the last reading for a short while.
class AccessibilityService {
public:
    explicit AccessibilityService(Accessibility& accessibility);
    AccessibilityService(Accessibility& accessibility, const Clock& wallClock);

    const double cacheTTL = 2.0;

    // Every command of the target's (or else the frontmost application's)
    // menus, depth first. Never fails: problems give a shorter or empty list.
    // Blocking; safe to call from several threads at once.
    QList<MenuItem> getMenuItems(const std::optional<RunningApplication>& target);

    void openAccessibilitySettings();

    // The walk and its readers.
    void collectMenuItems(const AccessibilityElementRef& element, const QStringList& path, const QString& appName,
                          const std::optional<QString>& bundleID, QList<MenuItem>& result);
    QList<AccessibilityElementRef> readChildren(const AccessibilityElementRef& element);
    bool readEnabled(const AccessibilityElementRef& element);
    std::optional<QString> readShortcut(const AccessibilityElementRef& element);

    std::optional<CachedMenuItems> cache() const;
    Accessibility& accessibility() { return accessibility_; }

private:
    std::optional<QString> readText(const AccessibilityElementRef& element, const QString& attribute);

    Accessibility& accessibility_;
    const Clock& clock_;
    mutable QMutex cacheMutex_;
    std::optional<CachedMenuItems> cache_;
};
