#include "menu/pressmenuitem.h"

#include "menu/menuitem.h"
#include "platform/accessibility.h"
#include "search/usagetracker.h"

bool pressMenuItem(const MenuItem& item, Accessibility& accessibility, const RecordUse& recordUse)
{
    if (!item.axElement)
        return false;
    // Asked again now: the state read with the menus may be stale.
    const AttributeRead enabled = accessibility.copyAttributeValue(item.axElement, AXName::enabled);
    if (!enabled.ok())
        return false;
    const bool* flag = std::get_if<bool>(&enabled.value);
    const bool disabled = flag && !*flag;
    // Pressed even when disabled, as the menu itself would let it be clicked.
    const AccessibilityError pressed = accessibility.performAction(item.axElement, AXName::press);
    if (pressed != AccessibilityError::success || disabled)
        return false;
    recordUse(item.appBundleID.value_or(QStringLiteral("unknown")), item.pathKey());
    return true;
}

bool pressMenuItem(const MenuItem& item, Accessibility& accessibility, UsageTracker& tracker)
{
    return pressMenuItem(item, accessibility,
                         [&tracker](const QString& bundle, const QString& path) { tracker.recordUsage(bundle, path); });
}
