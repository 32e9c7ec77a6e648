#pragma once

#include "platform/hotkeyplatform.h"

#include <QSet>

#include <memory>

class QSocketNotifier;
typedef struct _XDisplay Display;

// Watches the keyboard of the whole X session through XInput 2.2 raw key
// events on a connection of its own. Nothing is grabbed: every key still
// reaches the focused application. Raw events are turned into the detector's
// events: modifier presses and releases into flags changes, other presses into
// key-downs with the current flags and the key's virtual key code.
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
    std::optional<KeyEvent> translate(int evdevCode, bool pressed);

private:
    void readEvents();
    quint64 currentFlags() const;

    Display* display_ = nullptr;
    int opcode_ = 0;
    std::unique_ptr<QSocketNotifier> notifier_;
    HotkeyPlatform::Callback callback_;
    bool enabled_ = false;
    QSet<int> down_;
    bool capsLock_ = false;
};
