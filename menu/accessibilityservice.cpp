#include "menu/accessibilityservice.h"

#include "menu/pressmenuitem.h"
#include "menu/shortcuttext.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/crossthread.h"
#include "search/usagetracker.h"

#include <QPointer>

AccessibilityService::AccessibilityService(Accessibility& accessibility)
    : AccessibilityService(accessibility, Clock::wall())
{
}

AccessibilityService::AccessibilityService(Accessibility& accessibility, const Clock& wallClock)
    : accessibility_(accessibility), clock_(wallClock)
{
    pool_.setMaxThreadCount(kMaxConcurrent);
}

AccessibilityService::~AccessibilityService()
{
    // What runs holds this reader: it ends before the reader goes, stopped at
    // its next question to the other application (each has a time-out); what
    // has not started yet never will.
    pool_.clear();
    accessibility_.stopReadings();
    CrossThread::waitForDone(pool_);
}

void AccessibilityService::readMenuItems(const std::optional<RunningApplication>& target, QObject* context,
                                         std::function<void(const QList<MenuItem>&)> done)
{
    QPointer<QObject> receiver(context);
    // The front application is known on the caller's thread (it follows the
    // desktop's announcements there); the worker only reads.
    const std::optional<RunningApplication> resolved = target ? target : accessibility_.frontmostApplication();
    if (!resolved) {
        CrossThread::post(&deliveries_, [receiver, done = std::move(done)] {
            if (receiver && done)
                done({});
        });
        return;
    }
    CrossThread::start(pool_, [this, target = resolved, receiver, done = std::move(done)] {
        QList<MenuItem> items = getMenuItems(target);
        CrossThread::post(&deliveries_, [receiver, done, items = std::move(items)] {
            if (receiver && done)
                done(items);
        });
    }, QThread::HighPriority);
}

void AccessibilityService::press(const MenuItem& item, UsageTracker& usage)
{
    UsageTracker* tracker = &usage; // lives as long as the program (or the test)
    CrossThread::start(pool_, [this, item, tracker] {
        pressMenuItem(item, accessibility_, [this, tracker](const QString& bundle, const QString& path) {
            // The history belongs to the UI thread.
            CrossThread::post(&deliveries_, [tracker, bundle, path] { tracker->recordUsage(bundle, path); });
        });
    }, QThread::HighPriority);
}

std::optional<CachedMenuItems> AccessibilityService::cache() const
{
    std::lock_guard lock(cacheMutex_);
    return cache_;
}

QList<MenuItem> AccessibilityService::getMenuItems(const std::optional<RunningApplication>& target,
                                                   QStringList* emptySubmenus)
{
    const std::optional<RunningApplication> app = target ? target : accessibility_.frontmostApplication();
    if (!app)
        return {};
    const qint32 pid = app->processIdentifier;
    const std::optional<quint64> window = app->window;
    const QString appName = app->localizedName.value_or(QStringLiteral("Unknown"));
    const std::optional<QString> bundleID = app->bundleIdentifier;

    {
        std::lock_guard lock(cacheMutex_);
        if (!emptySubmenus && cache_ && cache_->pid == pid && cache_->window == window && clock_.seconds() - cache_->timestamp < cacheTTL)
            return cache_->items;
    }

    const AttributeRead menuBar =
        accessibility_.copyAttributeValue(accessibility_.applicationElement(pid, window), AXName::menuBar);
    const auto* bar = menuBar.as<AccessibilityElementRef>();
    if (!bar || !*bar)
        return {};

    QList<MenuItem> result;
    const QList<AccessibilityElementRef> menus = readChildren(*bar);
    const int skipped = accessibility_.skippedLeadingMenus();
    for (qsizetype i = 0; i < menus.size(); ++i) {
        const QString title = readText(menus[i], AXName::title).value_or(QString());
        if (title.isEmpty() || i < skipped)
            continue;
        collectMenuItems(menus[i], {title}, appName, bundleID, result, emptySubmenus);
    }

    // A reading the application left half-done is shown, but not kept as its menus.
    const AttributeRead complete = accessibility_.copyAttributeValue(*bar, AXName::readComplete);
    if (const bool* done = complete.as<bool>(); done && !*done)
        return result;
    std::lock_guard lock(cacheMutex_);
    cache_ = CachedMenuItems{result, clock_.seconds(), pid, window};
    return result;
}

void AccessibilityService::collectMenuItems(const AccessibilityElementRef& element, const QStringList& path,
                                            const QString& appName, const std::optional<QString>& bundleID,
                                            QList<MenuItem>& result, QStringList* emptySubmenus)
{
    for (const AccessibilityElementRef& child : readChildren(element)) {
        const std::optional<QString> role = readText(child, AXName::role);
        if (!role)
            continue;
        if (*role == AXName::roleMenu) {
            collectMenuItems(child, path, appName, bundleID, result, emptySubmenus);
            continue;
        }
        if (*role != AXName::roleMenuItem)
            continue;
        const std::optional<QString> title = readText(child, AXName::title);
        if (!title || title->isEmpty())
            continue;
        const bool enabled = readEnabled(child);
        const std::optional<QString> shortcut = readShortcut(child);
        const QStringList itemPath = path + QStringList{*title};
        if (readChildren(child).isEmpty()) {
            result.append(MenuItem{QUuid::createUuid(), *title, itemPath, shortcut, enabled, appName, bundleID, child});
            continue;
        }
        const qsizetype before = result.size();
        collectMenuItems(child, itemPath, appName, bundleID, result, emptySubmenus);
        if (emptySubmenus && result.size() == before)
            emptySubmenus->append(itemPath.join(kMenuPathSeparator));
    }
}

QList<AccessibilityElementRef> AccessibilityService::readChildren(const AccessibilityElementRef& element)
{
    const AttributeRead read = accessibility_.copyAttributeValue(element, AXName::children);
    const auto* children = read.as<QList<AccessibilityElementRef>>();
    return children ? *children : QList<AccessibilityElementRef>{};
}

bool AccessibilityService::readEnabled(const AccessibilityElementRef& element)
{
    const AttributeRead read = accessibility_.copyAttributeValue(element, AXName::enabled);
    const bool* enabled = read.as<bool>();
    return enabled && *enabled;
}

std::optional<QString> AccessibilityService::readShortcut(const AccessibilityElementRef& element)
{
    const AttributeRead modifiersRead = accessibility_.copyAttributeValue(element, AXName::menuItemCmdModifiers);
    const qint64* modifiers = modifiersRead.as<qint64>();
    const qint64 mask = modifiers ? *modifiers : 0;
    const std::optional<QString> character = readText(element, AXName::menuItemCmdChar);
    if (character && !character->isEmpty())
        return menuShortcutText(*character, mask);
    const AttributeRead keyRead = accessibility_.copyAttributeValue(element, AXName::menuItemCmdVirtualKey);
    if (const qint64* virtualKey = keyRead.as<qint64>())
        return menuShortcutText(*virtualKey, mask);
    return std::nullopt;
}

void AccessibilityService::openAccessibilitySettings()
{
    accessibility_.openAccessibilitySettings();
}

std::optional<QString> AccessibilityService::readText(const AccessibilityElementRef& element, const QString& attribute)
{
    const AttributeRead read = accessibility_.copyAttributeValue(element, attribute);
    if (const QString* text = read.as<QString>())
        return *text;
    return std::nullopt;
}
