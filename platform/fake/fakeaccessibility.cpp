#include "platform/fake/fakeaccessibility.h"

namespace FakeMenus {

MenuTree menuBar(std::initializer_list<MenuNode> menus, bool complete)
{
    return MenuTree{QList<MenuNode>(menus), complete};
}

MenuNode menu(const QString& title, std::initializer_list<MenuNode> entries)
{
    MenuNode node;
    node.kind = MenuNode::Kind::menu;
    node.title = title;
    node.children = QList<MenuNode>(entries);
    return node;
}

MenuNode item(const QString& title, bool enabled)
{
    MenuNode node;
    node.title = title;
    node.enabled = enabled;
    auto handle = std::make_shared<FakeMenuItem>();
    handle->enabled = enabled;
    node.handle = handle;
    return node;
}

MenuNode separator()
{
    MenuNode node;
    node.kind = MenuNode::Kind::separator;
    return node;
}

MenuNode withShortcut(MenuNode item, const KeyChord& shortcut)
{
    item.shortcut = shortcut;
    return item;
}

FakeMenuItem& handleOf(const MenuNode& item)
{
    return const_cast<FakeMenuItem&>(dynamic_cast<const FakeMenuItem&>(*item.handle));
}

} // namespace FakeMenus

void FakeAccessibility::addApplication(qint32 pid, std::optional<MenuTree> menus, std::optional<quint64> window)
{
    std::lock_guard lock(mutex_);
    applications_.insert({pid, window.value_or(0)}, std::move(menus));
}

void FakeAccessibility::freeze(qint32 pid, std::shared_ptr<Gate> gate)
{
    std::lock_guard lock(mutex_);
    frozen_.insert(pid, std::move(gate));
}

std::optional<MenuTree> FakeAccessibility::readMenus(qint32 pid, std::optional<quint64> window)
{
    std::shared_ptr<Gate> gate;
    std::optional<std::optional<MenuTree>> menus;
    {
        std::lock_guard lock(mutex_);
        gate = frozen_.value(pid);
        if (const auto it = applications_.constFind({pid, window.value_or(0)}); it != applications_.cend())
            menus = *it;
        else if (const auto own = applications_.constFind({pid, 0}); own != applications_.cend())
            menus = *own;
    }
    if (gate)
        gate->pass();
    ++readings;
    if (!menus || !trusted)
        return std::nullopt; // no such process, or no permission to read it
    return *menus;
}

std::optional<bool> FakeAccessibility::isEnabled(const MenuHandleRef& item)
{
    const auto* fake = dynamic_cast<const FakeMenuItem*>(item.get());
    if (!fake)
        return std::nullopt;
    if (fake->frozen)
        fake->frozen->pass();
    return fake->enabled;
}

bool FakeAccessibility::press(const MenuHandleRef& item)
{
    const auto* fake = dynamic_cast<const FakeMenuItem*>(item.get());
    if (!fake || !fake->enabled.has_value())
        return false;
    ++fake->pressCount;
    return fake->pressResult;
}

void FakeAccessibility::afterTrustIsKnown(QObject* context, std::function<void()> then)
{
    if (trustKnown) {
        then();
        return;
    }
    trustWaiters_.append({context, std::move(then)});
}

void FakeAccessibility::askTrust(QObject* context, std::function<void(bool)> answered)
{
    ++trustChecks;
    lastAnswer_ = trusted;
    QMetaObject::invokeMethod(context, [answered = std::move(answered), now = trusted] { answered(now); },
                              Qt::QueuedConnection);
}

void FakeAccessibility::announceTrust()
{
    trustKnown = true;
    for (auto& [context, then] : std::exchange(trustWaiters_, {})) {
        if (context)
            then();
    }
}

void FakeAccessibility::stopReadings()
{
    std::lock_guard lock(mutex_);
    for (const std::shared_ptr<Gate>& gate : std::as_const(frozen_))
        gate->open();
}
