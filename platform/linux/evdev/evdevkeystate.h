#pragma once

#include "platform/hotkeyplatform.h"

#include <QSet>

#include <optional>

// Turns key presses and releases, by Linux input (evdev) code, into what the
// hotkey detector sees: modifier presses and releases into flags changes,
// other presses into key-downs with the current flags and the key's virtual
// key code. Ctrl plays Command's part, as Qt has it on macOS; Super, which
// desktops keep for themselves (a tap opens GNOME's overview), plays Control's.
class EvdevKeyState {
public:
    std::optional<KeyEvent> translate(int evdevCode, bool pressed);
    // A mouse button pressed or a wheel turned, with the modifiers held now.
    KeyEvent pointerInput() const { return KeyEvent{KeyEvent::pointerInput, currentFlags(), 0}; }
    void clear();

private:
    quint64 currentFlags() const;

    QSet<int> down_;
    bool capsLock_ = false;
};
