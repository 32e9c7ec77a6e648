#pragma once

#include "platform/keyboardlayout.h"

#include <QHash>

// A layout whose keys type, and whose scan codes name, only what a test maps.
class FakeKeyboardLayout final : public KeyboardLayout {
public:
    QHash<quint16, QString> characters; // by position
    QHash<quint32, quint16> scanCodes;  // scan code → position

    QString characterAt(quint16 position) const override { return characters.value(position); }
    std::optional<quint16> positionOfScanCode(quint32 scanCode) const override
    {
        if (!scanCodes.contains(scanCode))
            return std::nullopt;
        return scanCodes.value(scanCode);
    }
};
