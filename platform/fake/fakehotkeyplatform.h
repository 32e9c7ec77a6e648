#pragma once

#include "platform/hotkeyplatform.h"

#include <QStringList>

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
    std::optional<KeyChord> desktopShortcut; // what the desktop was asked to watch
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
    bool bindDesktopShortcut(const KeyChord& shortcut, bool replace, std::function<void()> activated,
                             std::function<void(const DesktopShortcutState&)> changed) override
    {
        if (!desktopWatchesShortcuts)
            return false;
        desktopShortcut = shortcut;
        desktopReplaced = replace;
        desktopActivated = std::move(activated);
        desktopChanged = std::move(changed);
        return true;
    }
    void releaseDesktopShortcut() override
    {
        desktopShortcut.reset();
        desktopActivated = nullptr;
    }
    void forgetDesktopShortcut() override { ++desktopForgotten; }
    // The chord in words a test can read: "bindsym ctrl+alt+57".
    QString desktopShortcutConfigLine(const KeyChord& shortcut) override
    {
        QStringList parts;
        for (const auto& [modifier, word] : {std::pair{Modifier::ctrl, "ctrl"}, std::pair{Modifier::alt, "alt"},
                                             std::pair{Modifier::shift, "shift"}, std::pair{Modifier::super, "super"}}) {
            if (shortcut.modifiers.testFlag(modifier))
                parts << QString::fromLatin1(word);
        }
        return "bindsym " + (parts << QString::number(shortcut.key.position)).join(u'+');
    }

    bool hasTap() const { return bool(callback); }
    // Delivers an event as the system would, if a tap is there and enabled.
    void send(const KeyEvent& event)
    {
        if (callback && tapEnabled)
            callback(event);
    }
    // The modifiers now held, after one went down or up.
    void modifiers(Modifiers held) { send({KeyEvent::Kind::modifiersChanged, held, 0}); }
    void pointer(Modifiers held) { send({KeyEvent::Kind::pointer, held, 0}); }
    void keyDown(quint16 position, Modifiers held) { send({KeyEvent::Kind::keyDown, held, position}); }
};
