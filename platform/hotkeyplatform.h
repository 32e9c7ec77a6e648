#pragma once

#include <QtGlobal>

#include <functional>

// One keyboard event as the detector sees it.
struct KeyEvent {
    static constexpr int keyDown = 10;
    static constexpr int flagsChanged = 12;
    // Not a key: a mouse button went down or a wheel turned. A modifier held
    // meanwhile is part of a click or a zoom, not a tap.
    static constexpr int pointerInput = 1;

    int type = 0;
    quint64 flags = 0;   // device-independent modifier bits
    quint16 keyCode = 0; // layout-independent virtual key code (key-down only)
};

// How this session lets a program see the keyboard.
enum class KeyboardAccess {
    sessionWide,  // every key reaches watchers (macOS, X11)
    inputDevices, // read from the kernel's keyboards (Wayland, for members of the input group)
    none,         // only the desktop's own shortcuts, bound to the toggle command (Wayland)
};

// What watching the keyboard session-wide needs from the system.
class HotkeyPlatform {
public:
    using Callback = std::function<void(const KeyEvent&)>;

    virtual ~HotkeyPlatform();

    // Whether this program has been granted what watching needs. Never prompts.
    virtual bool isProcessTrusted() = 0;
    // Whether some application hides its key presses from watchers.
    virtual bool isSecureEventInputEnabled() = 0;
    // Creates a tap that passes every key-down, modifier change, mouse-button
    // press and wheel turn to `callback` on the main thread without altering
    // it; false when refused.
    virtual bool createTap(Callback callback) = 0;
    virtual void enableTap(bool enabled) = 0;
    // Drops the tap; no more events arrive.
    virtual void releaseTap() = 0;
    virtual KeyboardAccess keyboardAccess() { return KeyboardAccess::sessionWide; }

    // Where the desktop itself watches shortcuts for programs: asks it to
    // call `activated` on the main thread whenever `trigger` ("CTRL+SHIFT+k")
    // is pressed; the user may confirm or change the keys in the desktop's
    // own dialog. False when the desktop offers no such watch.
    virtual bool bindDesktopShortcut(const QString& trigger, std::function<void()> activated)
    {
        Q_UNUSED(trigger);
        Q_UNUSED(activated);
        return false;
    }
    virtual void releaseDesktopShortcut() {}

    // The platform's own.
    static HotkeyPlatform& current();
};
