#pragma once

#include "platform/keyboardlayout.h"

#include <mutex>

typedef struct _XDisplay Display;

// What a key types on the X keyboard layout active now.
class X11KeyboardLayout final : public KeyboardLayout {
public:
    X11KeyboardLayout();
    ~X11KeyboardLayout() override;

    QString characterAt(quint16 position) const override;
    // X keycodes are evdev codes + 8, whatever the layout.
    std::optional<quint16> positionOfScanCode(quint32 nativeScanCode) const override;

private:
    mutable std::mutex mutex_;
    Display* display_ = nullptr;
};
