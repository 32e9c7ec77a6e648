#pragma once

#include "platform/keys.h"

#include <QString>

#include <functional>

// What became of Kestrio's shortcut where the desktop watches it.
struct DesktopShortcutState {
    enum class Kind {
        none,    // not asked for
        pending, // asked; the desktop has not answered yet
        bound,   // the desktop runs Kestrio on `keys`
        refused, // no keys open Kestrio: `problem` says why
    };
    Kind kind = Kind::none;
    QString keys;    // as people read them: "Ctrl+Alt+Space"
    QString problem; // a sentence for the user

    friend bool operator==(const DesktopShortcutState&, const DesktopShortcutState&) = default;
};

// Where keys cannot reach Kestrio, how a shortcut of the desktop's own comes about.
enum class DesktopShortcutSetup {
    notNeeded,      // keys reach Kestrio itself
    desktopWatches, // Kestrio asks the desktop to watch it (GNOME's settings, the shortcut portal)
    configLine,     // the user adds a line to the compositor's configuration (sway)
    byHand,         // the user binds the toggle command in the desktop's keyboard settings
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
    // Creates a tap that passes every key-down, modifier change, mouse-button
    // press and wheel turn to `callback` on the main thread without altering
    // it; false when refused.
    virtual bool createTap(Callback callback) = 0;
    virtual void enableTap(bool enabled) = 0;
    // Drops the tap; no more events arrive.
    virtual void releaseTap() = 0;
    virtual KeyboardAccess keyboardAccess() { return KeyboardAccess::sessionWide; }

    virtual DesktopShortcutSetup desktopShortcutSetup() { return DesktopShortcutSetup::notNeeded; }
    // Where the desktop itself watches shortcuts for programs: asks it to
    // open Kestrio whenever `shortcut` is pressed, calling
    // `activated` or running the toggle command on the main thread; the user
    // may confirm or change the keys in the desktop's own settings. With
    // `replace` the user just chose these keys in Kestrio, so they replace
    // what the desktop has; else keys the user gave in the desktop's own
    // settings stay. `changed` hears what the desktop made of it, on the main
    // thread. False when the desktop offers no such watch.
    virtual bool bindDesktopShortcut(const KeyChord& shortcut, bool replace, std::function<void()> activated,
                                     std::function<void(const DesktopShortcutState&)> changed)
    {
        Q_UNUSED(shortcut);
        Q_UNUSED(replace);
        Q_UNUSED(activated);
        Q_UNUSED(changed);
        return false;
    }
    // Stops listening (Kestrio restarts the detector, or quits): what the
    // desktop keeps for the user stays.
    virtual void releaseDesktopShortcut() {}
    // The user no longer wants a shortcut: the desktop's entry for Kestrio goes.
    virtual void forgetDesktopShortcut() {}
    // The line that binds `shortcut` in the compositor's configuration
    // (configLine setups); empty for keys it cannot name.
    virtual QString desktopShortcutConfigLine(const KeyChord& shortcut)
    {
        Q_UNUSED(shortcut);
        return {};
    }

};
