#pragma once

#include <QString>

// The keyboard layout that is active right now.
class KeyboardLayout {
public:
    virtual ~KeyboardLayout();

    // Text the key types with no modifier held, or empty when it types none.
    virtual QString characterForKeyCode(quint16 keyCode) const = 0;
};
