#pragma once

#include "platform/keyboardlayout.h"

#include <QHash>

// A layout whose keys type only what a test maps; every other key types nothing.
class FakeKeyboardLayout final : public KeyboardLayout {
public:
    QHash<quint16, QString> characters;

    QString characterForKeyCode(quint16 keyCode) const override { return characters.value(keyCode); }
};
