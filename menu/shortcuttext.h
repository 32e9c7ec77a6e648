#pragma once

#include <QString>

#include <optional>

// Display texts of keyboard shortcuts, shared by menu items and custom shortcuts.

// Bits of a menu item's modifier mask. Command is implied unless NoCommand is set.
namespace MenuModifier {
inline constexpr qint64 Shift = 1;
inline constexpr qint64 Option = 2;
inline constexpr qint64 Control = 4;
inline constexpr qint64 NoCommand = 8;
} // namespace MenuModifier

// Glyphs ⌃ ⌥ ⇧ ⌘ of a menu modifier mask followed by the key character's glyph,
// or the whole character text upper-cased.
QString menuShortcutText(const QString& keyCharacter, qint64 modifierMask);

// Glyphs of a menu modifier mask followed by the name of a virtual key, or "?".
QString menuShortcutText(qint64 virtualKey, qint64 modifierMask);

// Glyph for the special key whose character is the first scalar of `keyCharacter`.
std::optional<QString> keyCharacterGlyph(const QString& keyCharacter);

// Glyph or name of a layout-independent virtual key code.
std::optional<QString> virtualKeyName(qint64 keyCode);
