#include "menu/accessibilityservice.h"

#include "menu/pressmenuitem.h"
#include "menu/shortcuttext.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/crossthread.h"

#include <QPointer>

AccessibilityService::AccessibilityService(Accessibility& accessibility, const KeyWords& keys)
    : AccessibilityService(accessibility, keys, Clock::wall())
{
}

AccessibilityService::AccessibilityService(Accessibility& accessibility, const KeyWords& keys, const Clock& wallClock)
    : accessibility_(accessibility), keys_(keys), clock_(wallClock)
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

void AccessibilityService::press(const MenuItem& item, std::function<void()> pressed)
{
    CrossThread::start(pool_, [this, item, pressed = std::move(pressed)] {
        if (pressMenuItem(item, accessibility_) && pressed)
            CrossThread::post(&deliveries_, pressed);
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

    const std::optional<MenuTree> tree = accessibility_.readMenus(pid, window);
    if (!tree)
        return {};
    const QList<MenuItem> result = menuItemsOf(*tree, appName, bundleID, emptySubmenus);
    // A reading the application left half-done is shown, but not kept as its menus.
    if (!tree->complete)
        return result;
    std::lock_guard lock(cacheMutex_);
    cache_ = CachedMenuItems{result, clock_.seconds(), pid, window};
    return result;
}

QList<MenuItem> AccessibilityService::menuItemsOf(const MenuTree& tree, const QString& appName,
                                                  const std::optional<QString>& bundleID,
                                                  QStringList* emptySubmenus) const
{
    QList<MenuItem> result;
    for (const MenuNode& menu : tree.menus) {
        if (menu.isMenu() && !menu.title.isEmpty())
            collect(menu, {menu.title}, appName, bundleID, result, emptySubmenus);
    }
    return result;
}

void AccessibilityService::collect(const MenuNode& menu, const QStringList& path, const QString& appName,
                                   const std::optional<QString>& bundleID, QList<MenuItem>& result,
                                   QStringList* emptySubmenus) const
{
    for (const MenuNode& child : menu.children) {
        if (child.kind == MenuNode::Kind::separator || child.title.isEmpty())
            continue;
        const QStringList childPath = path + QStringList{child.title};
        if (child.isMenu()) {
            const qsizetype before = result.size();
            collect(child, childPath, appName, bundleID, result, emptySubmenus);
            if (emptySubmenus && result.size() == before)
                emptySubmenus->append(childPath.join(kMenuPathSeparator));
            continue;
        }
        const std::optional<QString> shortcut =
            child.shortcut ? std::optional(shortcutText(*child.shortcut, keys_)) : std::nullopt;
        result.append(MenuItem{QUuid::createUuid(), child.title, childPath, shortcut, child.enabled, appName, bundleID,
                               child.handle});
    }
}

void AccessibilityService::openAccessibilitySettings()
{
    accessibility_.openAccessibilitySettings();
}
