#pragma once

#include "platform/hotkeyplatform.h"

#include <optional>

// A keyboard that a test types on.
class FakeHotkeyPlatform final : public HotkeyPlatform {
public:
    bool trusted = true;
    bool refuseTap = false;
    KeyboardAccess access = KeyboardAccess::sessionWide;
    bool tapEnabled = false;
    int tapsCreated = 0;
    Callback callback;

    bool isProcessTrusted() override { return trusted; }
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
    bool desktopReplaced = false; // the last binding replaced what the desktop had
    int desktopForgotten = 0;
    std::function<void()> desktopActivated;
    std::function<void(const DesktopShortcutState&)> desktopChanged;
    std::optional<DesktopShortcutSetup> setup; // else as `desktopWatchesShortcuts` says
    DesktopShortcutSetup desktopShortcutSetup() override
    {
        if (setup)
            return *setup;
        return desktopWatchesShortcuts ? DesktopShortcutSetup::desktopWatches : DesktopShortcutSetup::notNeeded;
    }
    bool bindDesktopShortcut(const QString& trigger, bool replace, std::function<void()> activated,
                             std::function<void(const DesktopShortcutState&)> changed) override
    {
        if (!desktopWatchesShortcuts)
            return false;
        desktopTrigger = trigger;
        desktopReplaced = replace;
        desktopActivated = std::move(activated);
        desktopChanged = std::move(changed);
        return true;
    }
    void releaseDesktopShortcut() override
    {
        desktopTrigger.clear();
        desktopActivated = nullptr;
    }
    void forgetDesktopShortcut() override { ++desktopForgotten; }
    QString desktopShortcutConfigLine(const QString& trigger) override { return "bindsym " + trigger; }

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
