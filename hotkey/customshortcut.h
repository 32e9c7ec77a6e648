#pragma once

#include "base/platformwords.h"

#include <QHashFunctions>
#include <QString>

#include <optional>

class KeyboardLayout;
class SettingsStore;

// The user's own key combination: a layout-independent key code plus the
// modifier flags that must be held.
struct CustomShortcut {
    quint16 keyCode = 0;
    quint64 modifiers = 0;

    // The stored shortcut, or nothing unless a key code in 0…65535 and
    // modifiers of at least 1 are stored.
    static std::optional<CustomShortcut> load(const SettingsStore& store);
    // Writes the key code, then the modifiers. Nothing ever removes them.
    void save(SettingsStore& store) const;

    friend bool operator==(const CustomShortcut&, const CustomShortcut&) = default;
};

size_t qHash(const CustomShortcut& shortcut, size_t seed = 0);

// The modifier flags set, in the platform's order and words ("⌃⌥⇧⌘",
// "Super+Ctrl+Alt+Shift+"), ready for the key to follow.
QString modifierText(quint64 modifiers, const KeyWords& words = PlatformWords::current().keys);

// What the key types on the active layout, upper-cased; "?" when it types nothing.
QString keyboardLayoutCharacter(quint16 keyCode, const KeyboardLayout& layout);

// The modifiers followed by the key's name, or the layout's character for it.
QString shortcutText(const CustomShortcut& shortcut, const KeyboardLayout& layout,
                     const KeyWords& words = PlatformWords::current().keys);

// The shortcut as the desktop's shortcut portal writes keys ("CTRL+SHIFT+s",
// "LOGO+space"): the Linux modifiers the flags stand for, then the key's
// keysym name. Empty when the key has no name there.
QString desktopShortcutTrigger(const CustomShortcut& shortcut, const KeyboardLayout& layout);
// The shortcut offered where the desktop watches it for Kestrio: Ctrl+Alt+Space
// (Command and Option stand for Ctrl and Alt, as everywhere on Linux).
CustomShortcut defaultDesktopShortcut();
