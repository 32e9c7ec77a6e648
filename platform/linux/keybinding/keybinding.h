#pragma once

#include "platform/keys.h"

#include <QString>

#include <optional>

// Translates a toolkit's key binding text as AT-SPI reports it: GTK's
// "mnemonic;menu path;<Primary><Shift>s" or Qt's "Ctrl+Shift+S". Nothing when
// the item has no shortcut, or when Qt reports only the item's mnemonic.
std::optional<KeyChord> translateKeyBinding(const QString& binding, const QString& itemName);

std::optional<KeyChord> translateGtkAccelerator(const QString& accelerator);
std::optional<KeyChord> translateQtShortcut(const QString& shortcut, const QString& itemName);

// A shortcut as a menu draws it beside an item's name: "Ctrl+S",
// "Shift+Ctrl+Z", "Ctrl-Page Up", "^R", "C-s", "F5". Nothing for a sequence
// of keys ("C-x C-s", "Ctrl+K, Ctrl+C"), a command (":w") or a key that types
// without a modifier.
std::optional<KeyChord> translateDrawnShortcut(const QString& drawn);

// An item's name that carries the shortcut after a tab ("Open\tCtrl+O"):
// the name before the tab, and the shortcut when the rest reads as one.
struct NameAndShortcut {
    QString name;
    std::optional<KeyChord> key;
};
NameAndShortcut splitDrawnShortcut(const QString& name);

// Whether a key is the item's mnemonic rather than a shortcut: Alt and one
// letter of its name, which is how buttons and Qt's items without a shortcut
// report their key binding.
bool isMnemonicOf(const KeyChord& key, const QString& itemName);
