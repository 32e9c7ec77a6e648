#include "menu/pressmenuitem.h"

#include "menu/menuitem.h"
#include "platform/accessibility.h"

bool pressMenuItem(const MenuItem& item, Accessibility& accessibility)
{
    if (!item.handle)
        return false;
    // Asked again now: the state read with the menus may be stale.
    const std::optional<bool> enabled = accessibility.isEnabled(item.handle);
    if (!enabled)
        return false; // gone, or not answering
    return accessibility.press(item.handle) && *enabled;
}
