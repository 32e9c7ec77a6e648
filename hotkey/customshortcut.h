#pragma once

#include "base/platformwords.h"
#include "platform/keys.h"

#include <QString>

#include <optional>

class KeyboardLayout;
class SettingsStore;

// The user's own shortcut: a key chord whose key is known by its position,
// so that it fires whatever the layout.
//
// Stored as the macOS build stores its CustomShortcut: "customHotkeyKeyCode"
// holds the key's position as macOS numbers a US keyboard's keys (A = 0,
// Space = 49; keys macOS has no number for: 0x1000 + the Linux input code),
// "customHotkeyModifiers" macOS's modifier bits (Command 0x100000 for Ctrl,
// Option 0x80000 for Alt, Control 0x40000 for Super, Shift 0x20000). Those
// numbers are read and written here alone.

// The stored shortcut, or nothing unless a key code in 0…65535 and modifiers
// of at least 1 are stored.
std::optional<KeyChord> loadCustomShortcut(const SettingsStore& store);
// Writes the key code, then the modifiers. Nothing ever removes them.
void saveCustomShortcut(const KeyChord& shortcut, SettingsStore& store);

// What the key types on the active layout, upper-cased; "?" when it types nothing.
QString keyboardLayoutCharacter(quint16 position, const KeyboardLayout& layout);

// The modifiers followed by the key's name, or the layout's character for it.
QString shortcutText(const KeyChord& shortcut, const KeyboardLayout& layout,
                     const KeyWords& words);

// The shortcut offered where the desktop watches it for Kestrio: Ctrl+Alt+Space.
KeyChord defaultDesktopShortcut();
