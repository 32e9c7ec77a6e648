#include "platform/fake/fakeaccessibility.h"

namespace {

QList<AccessibilityElementRef> refs(std::initializer_list<std::shared_ptr<FakeElement>> elements)
{
    QList<AccessibilityElementRef> list;
    for (const auto& e : elements)
        list.append(e);
    return list;
}

std::shared_ptr<FakeElement> element(const QString& role, const QString& title)
{
    auto e = std::make_shared<FakeElement>();
    e->set(AXName::role, role);
    e->set(AXName::title, title);
    return e;
}

} // namespace

void FakeElement::set(const QString& attribute, AccessibilityValue value)
{
    attributes.insert(attribute, AttributeRead{AccessibilityError::success, std::move(value)});
}

std::shared_ptr<FakeElement> FakeElement::menuBar(std::initializer_list<std::shared_ptr<FakeElement>> menus)
{
    auto bar = std::make_shared<FakeElement>();
    bar->set(AXName::role, QStringLiteral("AXMenuBar"));
    bar->set(AXName::children, refs(menus));
    return bar;
}

std::shared_ptr<FakeElement> FakeElement::barMenu(const QString& title, std::initializer_list<std::shared_ptr<FakeElement>> items)
{
    auto menu = element(AXName::roleMenu, QString());
    menu->set(AXName::children, refs(items));
    auto entry = element(AXName::roleMenuBarItem, title);
    entry->set(AXName::children, QList<AccessibilityElementRef>{menu});
    return entry;
}

std::shared_ptr<FakeElement> FakeElement::item(const QString& title, bool enabled)
{
    auto e = element(AXName::roleMenuItem, title);
    e->set(AXName::enabled, enabled);
    return e;
}

std::shared_ptr<FakeElement> FakeElement::submenu(const QString& title, std::initializer_list<std::shared_ptr<FakeElement>> items)
{
    auto menu = element(AXName::roleMenu, QString());
    menu->set(AXName::children, refs(items));
    auto e = item(title);
    e->set(AXName::children, QList<AccessibilityElementRef>{menu});
    return e;
}

std::shared_ptr<FakeElement> FakeElement::separator()
{
    return item(QString());
}

std::shared_ptr<FakeElement> FakeElement::withRole(const QString& role, const QString& title)
{
    return element(role, title);
}

void FakeAccessibility::addApplication(qint32 pid, std::shared_ptr<FakeElement> menuBar, std::optional<quint64> window)
{
    auto app = std::make_shared<FakeElement>();
    app->set(QStringLiteral("AXRole"), QStringLiteral("AXApplication"));
    if (menuBar)
        app->set(AXName::menuBar, AccessibilityElementRef(menuBar));
    std::lock_guard lock(mutex_);
    applications_.insert({pid, window.value_or(0)}, app);
}

std::shared_ptr<FakeElement> FakeAccessibility::application(qint32 pid, std::optional<quint64> window) const
{
    std::lock_guard lock(mutex_);
    if (auto app = applications_.value({pid, window.value_or(0)}))
        return app;
    return applications_.value({pid, 0});
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
    for (const std::shared_ptr<FakeElement>& app : std::as_const(applications_)) {
        if (app->frozen)
            app->frozen->open();
    }
}

AccessibilityElementRef FakeAccessibility::applicationElement(qint32 pid, std::optional<quint64> window)
{
    if (auto app = application(pid, window))
        return app;
    // Like the platform, any pid gives an element; reading it fails.
    auto nobody = std::make_shared<FakeElement>();
    nobody->vanished = true;
    return nobody;
}

AttributeRead FakeAccessibility::copyAttributeValue(const AccessibilityElementRef& element, const QString& attribute)
{
    {
        std::lock_guard lock(mutex_);
        ++attributeReads;
    }
    const auto* fake = dynamic_cast<const FakeElement*>(element.get());
    if (fake && fake->frozen)
        fake->frozen->pass();
    if (!fake || fake->vanished)
        return {AccessibilityError::invalidElement, {}};
    if (!trusted)
        return {AccessibilityError::cannotComplete, {}};
    return fake->attributes.value(attribute, AttributeRead{AccessibilityError::noValue, {}});
}

AccessibilityError FakeAccessibility::performAction(const AccessibilityElementRef& element, const QString& action)
{
    const auto* fake = dynamic_cast<const FakeElement*>(element.get());
    if (!fake || fake->vanished)
        return AccessibilityError::invalidElement;
    if (action != AXName::press)
        return AccessibilityError::actionUnsupported;
    ++fake->pressCount;
    return fake->pressResult;
}
