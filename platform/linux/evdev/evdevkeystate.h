#pragma once

#include "platform/hotkeyplatform.h"

#include <QSet>

#include <optional>

// Turns key presses and releases, by Linux input (evdev) code, into what the
// hotkey detector sees: modifier presses and releases into changes of the
// modifiers held, other presses into key-downs with the modifiers held and
// the key's position.
class EvdevKeyState {
public:
    std::optional<KeyEvent> translate(int evdevCode, bool pressed);
    // A mouse button pressed or a wheel turned, with the modifiers held now.
    KeyEvent pointerInput() const { return KeyEvent{KeyEvent::Kind::pointer, held(), 0}; }
    void clear();

private:
    Modifiers held() const;

    QSet<int> down_;
};
