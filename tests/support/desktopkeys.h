#pragma once

// Desktop keys written as the shortcut portal writes them, for tables that
// read better that way: "CTRL+ALT+space".

#include "platform/linux/xkb/desktopkeys.h"

#include <QStringList>

inline DesktopKeys desktopKeys(const QString& portalTrigger)
{
    DesktopKeys keys;
    QStringList parts = portalTrigger.split(u'+');
    keys.keysym = parts.takeLast();
    for (const QString& part : std::as_const(parts)) {
        if (part == QLatin1String("CTRL"))
            keys.modifiers |= Modifier::ctrl;
        else if (part == QLatin1String("ALT"))
            keys.modifiers |= Modifier::alt;
        else if (part == QLatin1String("SHIFT"))
            keys.modifiers |= Modifier::shift;
        else if (part == QLatin1String("LOGO"))
            keys.modifiers |= Modifier::super;
    }
    return keys;
}
