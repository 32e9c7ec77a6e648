#pragma once

#include "base/platformwords.h"
#include "platform/keys.h"

#include <QString>

// Display texts of keyboard shortcuts, shared by menu items and custom
// shortcuts, in the words of a platform.

// The modifiers held, in the platform's order and words ("⌃⌥⇧⌘",
// "Super+Ctrl+Alt+Shift+"), ready for the key to follow.
QString modifierText(Modifiers modifiers, const KeyWords& words);

// A named key's word: "⏎", "Space", "F5".
QString keyName(NamedKey key, const KeyWords& words);

// The chord: its modifiers, then the key's name, else what it types
// upper-cased ("ß" → "SS"), else "?". `typed` stands in for what the key
// types where only its position is known.
QString shortcutText(const KeyChord& chord, const KeyWords& words,
                     const QString& typed = {});
