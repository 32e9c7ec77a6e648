#pragma once

#include "base/platformwords.h"
#include "platform/menutree.h"

#include <QString>

#include <optional>

// Display texts of keyboard shortcuts, shared by menu items and custom shortcuts,
// in the words of a platform (by default the one this program runs on).

// Bits of a menu item's modifier mask. Command is implied unless NoCommand is set.
namespace MenuModifier {
inline constexpr qint64 Shift = 1;
inline constexpr qint64 Option = 2;
inline constexpr qint64 Control = 4;
inline constexpr qint64 NoCommand = 8;
} // namespace MenuModifier

// The modifiers of a menu modifier mask followed by the key character's name,
// or the whole character text upper-cased.
QString menuShortcutText(const QString& keyCharacter, qint64 modifierMask,
                         const KeyWords& words = PlatformWords::current().keys);

// The modifiers of a menu modifier mask followed by the name of a virtual key, or "?".
QString menuShortcutText(qint64 virtualKey, qint64 modifierMask, const KeyWords& words = PlatformWords::current().keys);

// A menu item's shortcut as read: by its key character, else its virtual
// key; nothing when it names neither.
std::optional<QString> menuShortcutText(const MenuKeyEquivalent& key, const KeyWords& words = PlatformWords::current().keys);

// Name of the special key whose character is the first scalar of `keyCharacter`.
std::optional<QString> keyCharacterGlyph(const QString& keyCharacter,
                                         const KeyWords& words = PlatformWords::current().keys);

// Name of a layout-independent virtual key code.
std::optional<QString> virtualKeyName(qint64 keyCode, const KeyWords& words = PlatformWords::current().keys);

// A shortcut's text from the roles of its modifiers and its key's text.
QString shortcutText(bool control, bool option, bool shift, bool command, const QString& key, const KeyWords& words);
