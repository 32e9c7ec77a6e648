#pragma once

#include "platform/hotkeyplatform.h"

// A keyboard that a test types on.
class FakeHotkeyPlatform final : public HotkeyPlatform {
public:
    bool trusted = true;
    bool secureInput = false;
    bool refuseTap = false;
    KeyboardAccess access = KeyboardAccess::sessionWide;
    bool tapEnabled = false;
    int tapsCreated = 0;
    Callback callback;

    bool isProcessTrusted() override { return trusted; }
    bool isSecureEventInputEnabled() override { return secureInput; }
    bool createTap(Callback cb) override
    {
        if (refuseTap)
            return false;
        ++tapsCreated;
        callback = std::move(cb);
        return true;
    }
    void enableTap(bool enabled) override { tapEnabled = enabled; }
    void releaseTap() override
    {
        callback = nullptr;
        tapEnabled = false;
    }

    KeyboardAccess keyboardAccess() override { return access; }

    // A desktop that watches shortcuts itself, when `desktopWatchesShortcuts`.
    bool desktopWatchesShortcuts = false;
    QString desktopTrigger;
    std::function<void()> desktopActivated;
    bool bindDesktopShortcut(const QString& trigger, std::function<void()> activated) override
    {
        if (!desktopWatchesShortcuts)
            return false;
        desktopTrigger = trigger;
        desktopActivated = std::move(activated);
        return true;
    }
    void releaseDesktopShortcut() override
    {
        desktopTrigger.clear();
        desktopActivated = nullptr;
    }

    bool hasTap() const { return bool(callback); }
    // Delivers an event as the system would, if a tap is there and enabled.
    void send(int type, quint64 flags, quint16 keyCode = 0)
    {
        if (callback && tapEnabled)
            callback(KeyEvent{type, flags, keyCode});
    }
    void flags(quint64 f) { send(KeyEvent::flagsChanged, f); }
    void pointer(quint64 f) { send(KeyEvent::pointerInput, f); }
    void keyDown(quint16 code, quint64 f) { send(KeyEvent::keyDown, f, code); }
};
