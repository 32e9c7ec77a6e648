#pragma once

#include "platform/hotkeyplatform.h"
#include "platform/linux/displaysession.h"
#include "platform/linux/evdev/evdevkeyboardtap.h"
#include "platform/linux/x11/x11keyboardtap.h"

#include <QMetaObject>

#include <memory>

class Accessibility;
class GlobalShortcutsPortal;
class GnomeShortcut;
class KdeGlobalShortcut;
class KeyboardLayout;

// Keys on Linux: XInput2 under X11; under Wayland the keyboard devices for
// members of the input group, else a shortcut the desktop watches for
// Kestrio (GNOME's custom shortcuts, Plasma's global shortcuts, sway's
// configuration, the shortcut portal elsewhere).
class LinuxHotkeyPlatform final : public HotkeyPlatform {
public:
    LinuxHotkeyPlatform(const DisplaySession& session, Accessibility& accessibility, const KeyboardLayout& layout);
    ~LinuxHotkeyPlatform() override;

    // Watching keys on X11 needs no grant; reading menus does, so trust means
    // the accessibility bus answers, as for the menu reader.
    bool isProcessTrusted() override;
    bool createTap(Callback callback) override;
    void enableTap(bool enabled) override;
    void releaseTap() override;
    KeyboardAccess keyboardAccess() override;
    DesktopShortcutSetup desktopShortcutSetup() override;
    bool bindDesktopShortcut(const KeyChord& shortcut, bool replace, std::function<void()> activated,
                             std::function<void(const DesktopShortcutState&)> changed) override;
    void releaseDesktopShortcut() override;
    void forgetDesktopShortcut() override;
    QString desktopShortcutConfigLine(const KeyChord& shortcut) override;

    // The command a desktop shortcut runs: this program, by name where that
    // finds it (an installed Kestrio), else by its path (a build of its own).
    static QString toggleCommand();

private:
    GlobalShortcutsPortal& portal();
    GnomeShortcut& gnome();
    KdeGlobalShortcut& kde();

    const DisplaySession session_;
    Accessibility& accessibility_;
    const KeyboardLayout& layout_;
    std::unique_ptr<GlobalShortcutsPortal> portal_;
    QMetaObject::Connection portalState_;
    std::unique_ptr<GnomeShortcut> gnome_;
    std::unique_ptr<KdeGlobalShortcut> kde_;
    X11KeyboardTap x11_;
    EvdevKeyboardTap devices_;
};
