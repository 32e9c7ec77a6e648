#pragma once

#include "platform/linux/exported/exportedmenunode.h"

#include <QDBusArgument>

// A menu bar an application exports through dbusmenu (com.canonical.dbusmenu,
// as global menus and Qt's and Chromium's menu bars do), read from a reply
// to GetLayout. The application decides all of the input: nesting and size
// are bounded, items listed twice appear once.
class DbusmenuLayout {
public:
    // The top-level entries below the root; nothing when it is not a layout.
    static std::optional<QList<ExportedMenuNode>> read(const QDBusArgument& reply, const QString& service,
                                                       const QString& path);

    // A dbusmenu "shortcut" property ([["Control", "Shift", "s"]]): its first chord.
    static std::optional<KeyChord> translateShortcut(const QList<QStringList>& chords);
};
