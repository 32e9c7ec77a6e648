#pragma once

#include "platform/keyboardlayout.h"

#include <QHash>

// A layout whose keys type, and whose scan codes name, only what a test maps.
class FakeKeyboardLayout final : public KeyboardLayout {
public:
    QHash<quint16, QString> characters;
    QHash<quint32, quint16> scanCodes;

    QString characterForKeyCode(quint16 keyCode) const override { return characters.value(keyCode); }
    std::optional<quint16> keyCodeForScanCode(quint32 scanCode) const override
    {
        if (!scanCodes.contains(scanCode))
            return std::nullopt;
        return scanCodes.value(scanCode);
    }
};
