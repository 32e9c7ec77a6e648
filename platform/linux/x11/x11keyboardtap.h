#pragma once

#include "platform/hotkeyplatform.h"
#include "platform/linux/evdev/evdevkeystate.h"

#include <memory>

class QSocketNotifier;
typedef struct _XDisplay Display;

// Watches the keyboard of the whole X session through XInput 2.2 raw key
// (and button) events on a connection of its own. Nothing is grabbed: every key still
// reaches the focused application. Raw events carry evdev codes (+ 8), which
// EvdevKeyState turns into the detector's events.
class X11KeyboardTap {
public:
    X11KeyboardTap();
    ~X11KeyboardTap();
    X11KeyboardTap(const X11KeyboardTap&) = delete;
    X11KeyboardTap& operator=(const X11KeyboardTap&) = delete;

    // False when there is no X display with XInput 2.2 (e.g. Wayland without X).
    bool create(HotkeyPlatform::Callback callback);
    void setEnabled(bool enabled);
    void release();

    // Turns one raw key event (evdev code) into what the detector sees, or nothing.
    std::optional<KeyEvent> translate(int evdevCode, bool pressed) { return keys_.translate(evdevCode, pressed); }

private:
    void readEvents();

    Display* display_ = nullptr;
    int opcode_ = 0;
    std::unique_ptr<QSocketNotifier> notifier_;
    HotkeyPlatform::Callback callback_;
    bool enabled_ = false;
    EvdevKeyState keys_;
};
