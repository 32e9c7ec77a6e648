#pragma once

#include <QString>

#include <optional>

// The keyboard layout that is active right now.
class KeyboardLayout {
public:
    virtual ~KeyboardLayout();

    // Text the key types with no modifier held, or empty when it types none.
    virtual QString characterForKeyCode(quint16 keyCode) const = 0;
    // The layout-independent key code of a key event's native scan code
    // (QKeyEvent::nativeScanCode), or nothing when it names no key.
    virtual std::optional<quint16> keyCodeForScanCode(quint32 nativeScanCode) const = 0;

    static KeyboardLayout& current();
};
