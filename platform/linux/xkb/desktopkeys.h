#pragma once

#include "platform/keys.h"

#include <QString>

#include <optional>

class KeyboardLayout;

// A shortcut in the words desktops write theirs with: its modifiers and the
// key's X keysym name ("space", "F5", "k", "comma"). GNOME's settings,
// Plasma's shortcuts, sway's configuration and the shortcut portal each spell
// it their own way from here.
struct DesktopKeys {
    Modifiers modifiers;
    QString keysym;

    // Nothing for a key desktops have no name for. A key known by its
    // position is named by what it types on `layout`.
    static std::optional<DesktopKeys> of(const KeyChord& chord, const KeyboardLayout& layout);

    // As the shortcut portal writes keys: "CTRL+ALT+space", "LOGO+k".
    QString portalTrigger() const;

    friend bool operator==(const DesktopKeys&, const DesktopKeys&) = default;
};
