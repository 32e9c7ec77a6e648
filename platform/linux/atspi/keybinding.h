#pragma once

#include <QString>

#include <optional>

// A menu item's key equivalent in the shape menus report it: a modifier mask
// (Shift 1, Option 2, Control 4, no-Command 8) and either a key character or
// a virtual key code.
struct MenuKeyEquivalent {
    qint64 modifiers = 0;
    std::optional<QString> character;
    std::optional<qint64> virtualKey;

    friend bool operator==(const MenuKeyEquivalent&, const MenuKeyEquivalent&) = default;
};

// Translates a toolkit's key binding text as AT-SPI reports it: GTK's
// "mnemonic;menu path;<Primary><Shift>s" or Qt's "Ctrl+Shift+S". Nothing when
// the item has no shortcut, or when Qt reports only the item's mnemonic.
std::optional<MenuKeyEquivalent> translateKeyBinding(const QString& binding, const QString& itemName);

std::optional<MenuKeyEquivalent> translateGtkAccelerator(const QString& accelerator);
std::optional<MenuKeyEquivalent> translateQtShortcut(const QString& shortcut, const QString& itemName);
