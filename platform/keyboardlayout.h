#pragma once

#include <QString>

#include <optional>

// The keyboard layout that is active right now.
class KeyboardLayout {
public:
    virtual ~KeyboardLayout();

    // Text the key at `position` (a Linux input code) types with no modifier
    // held, or empty when it types none.
    virtual QString characterAt(quint16 position) const = 0;
    // The position of the key behind a key event's native scan code
    // (QKeyEvent::nativeScanCode), or nothing when it names no key.
    virtual std::optional<quint16> positionOfScanCode(quint32 nativeScanCode) const = 0;

};
