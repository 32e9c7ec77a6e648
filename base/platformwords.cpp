#include "base/platformwords.h"

const PlatformWords& PlatformWords::macOS()
{
    static const PlatformWords words{
        .keys =
            {
                // ⌃ is the Control key, which plays Super's part; ⌘ (Command) plays Ctrl's.
                .modifiers = {{Modifier::super, QStringLiteral("⌃")},
                              {Modifier::alt, QStringLiteral("⌥")},
                              {Modifier::shift, QStringLiteral("⇧")},
                              {Modifier::ctrl, QStringLiteral("⌘")}},
                .joiner = QString(),
                .keyNames = {{NamedKey::returnKey, "⏎"}, {NamedKey::enter, "⏎"},   {NamedKey::tab, "⇥"},
                             {NamedKey::space, "Space"},  {NamedKey::backspace, "⌫"}, {NamedKey::deleteForward, "⌦"},
                             {NamedKey::escape, "⎋"},     {NamedKey::home, "↖"},   {NamedKey::end, "↘"},
                             {NamedKey::pageUp, "⇞"},     {NamedKey::pageDown, "⇟"}, {NamedKey::left, "←"},
                             {NamedKey::right, "→"},      {NamedKey::up, "↑"},     {NamedKey::down, "↓"},
                             {NamedKey::help, "Help"}},
            },
        .doubleTapCtrl = QStringLiteral("Double-tap ⌘ Command"),
        .doubleTapAlt = QStringLiteral("Double-tap ⌥ Option"),
        .welcomeHint = QStringLiteral("Search and execute any menu item in the active app instantly.\n"
                                      "Just double-tap ⌘ Command to get started."),
        .permissionMissing = QStringLiteral("Accessibility permission required"),
        .permissionExplanation = QStringLiteral("Kestrio needs Accessibility access to read menu items from other apps."),
        .permissionGranted = QStringLiteral("Accessibility permission granted!"),
        .grantPermission = QStringLiteral("Open System Settings"),
        .continueWithoutPermission = QStringLiteral("Continue Without Permission"),
        .hideIcon = QStringLiteral("Hide menu bar icon"),
        .hiddenIconNote = QStringLiteral("Your hotkey still works. To reopen this window, launch Kestrio again "
                                         "from Finder, Spotlight, or Launchpad."),
        .hotkeyInactiveText = QStringLiteral(
            "Kestrio needs Accessibility permission to watch for your shortcut. If it is already ticked in System "
            "Settings, remove Kestrio with the − button and add it again — the permission goes stale when the app "
            "is replaced or updated."),
        .openAccessibilitySettings = QStringLiteral("Open Accessibility Settings"),
        .hotkeyInactiveMenuRow = QStringLiteral("Hotkey inactive — grant Accessibility"),
        // Every key reaches a trusted app: no command to bind.
        .toggleCommand = QString(),
        .toggleCommandNote = QString(),
        .copyCommand = QString(),
        .keysUnavailableTitle = QString(),
        .keysUnavailableText = QString(),
        .keysUnavailableMenuRow = QString(),
        .keysFromDevicesNote = QString(),
        .welcomeHintWithoutKeys = QString(),
        .setUpDesktopShortcut = QString(),
        .removeDesktopShortcut = QString(),
        .desktopShortcutBound = QString(),
        .desktopShortcutPending = QString(),
        .noDesktopShortcut = QString(),
        .configLineNote = QString(),
        .noTrayTitle = QString(),
        .noTrayText = QString(), // the menu bar always has room for the icon
        .unpackFailedPrefix = QStringLiteral("Failed to mount DMG: "),
        .bundleMissing = QStringLiteral("Kestrio.app not found in DMG."),
    };
    return words;
}

const PlatformWords& PlatformWords::linuxDesktop()
{
    // Key words as Qt's native key-sequence text writes them (and so the
    // applications whose menus are shown), except Super, which is what
    // keyboards and desktops call Qt's Meta, and the arrows, which read
    // better as arrows.
    static const PlatformWords words{
        .keys =
            {
                .modifiers = {{Modifier::super, QStringLiteral("Super")},
                              {Modifier::ctrl, QStringLiteral("Ctrl")},
                              {Modifier::alt, QStringLiteral("Alt")},
                              {Modifier::shift, QStringLiteral("Shift")}},
                .joiner = QStringLiteral("+"),
                .keyNames = {{NamedKey::returnKey, "Return"}, {NamedKey::enter, "Enter"},  {NamedKey::tab, "Tab"},
                             {NamedKey::space, "Space"},      {NamedKey::backspace, "Backspace"},
                             {NamedKey::deleteForward, "Del"}, {NamedKey::escape, "Esc"},  {NamedKey::home, "Home"},
                             {NamedKey::end, "End"},          {NamedKey::pageUp, "PgUp"},  {NamedKey::pageDown, "PgDown"},
                             {NamedKey::left, "←"},           {NamedKey::right, "→"},      {NamedKey::up, "↑"},
                             {NamedKey::down, "↓"},           {NamedKey::help, "Help"}},
            },
        .doubleTapCtrl = QStringLiteral("Double-tap Ctrl"),
        .doubleTapAlt = QStringLiteral("Double-tap Alt"),
        .welcomeHint = QStringLiteral("Search and execute any menu item in the active app instantly.\n"
                                      "Just double-tap Ctrl to get started."),
        .permissionMissing = QStringLiteral("Accessibility support is off"),
        .permissionExplanation = QStringLiteral("Kestrio reads other apps' menus through the desktop's "
                                                "accessibility support. Turn it on to let Kestrio see them."),
        .permissionGranted = QStringLiteral("Accessibility support is on!"),
        .grantPermission = QStringLiteral("Turn On Accessibility"),
        .continueWithoutPermission = QStringLiteral("Continue Without Accessibility"),
        .hideIcon = QStringLiteral("Hide tray icon"),
        .hiddenIconNote = QStringLiteral("Your hotkey still works. To reopen this window, start Kestrio again "
                                         "from your applications menu or launcher."),
        .hotkeyInactiveText = QStringLiteral(
            "Kestrio watches for your shortcut only while the desktop's accessibility support is on. Turn it on "
            "here or in your desktop's accessibility settings; apps that were already running may need a restart "
            "before their menus show."),
        .openAccessibilitySettings = QStringLiteral("Turn On Accessibility"),
        .hotkeyInactiveMenuRow = QStringLiteral("Hotkey inactive — turn on accessibility"),
        .toggleCommand = QStringLiteral("kestrio --toggle"),
        .toggleCommandNote = QStringLiteral("To open the panel with a shortcut of your desktop's own keyboard "
                                            "settings, bind the shortcut to this command:"),
        .copyCommand = QStringLiteral("Copy"),
        .keysUnavailableTitle = QStringLiteral("Double-tap unavailable on Wayland"),
        .keysUnavailableText = QStringLiteral(
            "Wayland shows an app only the keys typed into its own windows, so Kestrio cannot watch for a double "
            "tap or a shortcut itself: a shortcut of your desktop's own opens it instead, set up below. To use "
            "the double tap, let Kestrio read the keyboard devices: run “sudo usermod -aG input $USER”, then log "
            "out and in again. Members of the input group can read every key typed, passwords included."),
        .keysUnavailableMenuRow = QStringLiteral("Hotkey unavailable on Wayland — see Settings"),
        .keysFromDevicesNote = QStringLiteral("On Wayland, Kestrio reads your keyboards directly, as a member of the "
                                              "input group."),
        .welcomeHintWithoutKeys = QStringLiteral("Search and execute any menu item in the active app instantly.\n"
                                                 "Set up a desktop shortcut below to get started."),
        .setUpDesktopShortcut = QStringLiteral("Set Up Shortcut"),
        .removeDesktopShortcut = QStringLiteral("Remove"),
        .desktopShortcutBound = QStringLiteral("%1 opens Kestrio"),
        .desktopShortcutPending = QStringLiteral("Asking the desktop…"),
        .noDesktopShortcut = QStringLiteral("No shortcut of the desktop's opens Kestrio yet."),
        .configLineNote = QStringLiteral("Add this line to your sway configuration, then reload it:"),
        .noTrayTitle = QStringLiteral("No tray on this desktop"),
        .noTrayText = QStringLiteral(
            "This desktop shows no tray icons, so Kestrio has no icon to click. Your hotkey still works. Turn on "
            "the desktop's tray support (on GNOME, the AppIndicator extension), or start Kestrio again from your "
            "applications menu to open its settings."),
        .unpackFailedPrefix = QStringLiteral("Failed to unpack the update archive: "),
        .bundleMissing = QStringLiteral("Kestrio.app not found in the update archive."),
    };
    return words;
}

const QStringList& macOSOnlyWords()
{
    static const QStringList words{
        QStringLiteral("⌘"),      QStringLiteral("⌥"),      QStringLiteral("Command"),
        QStringLiteral("Option"), QStringLiteral("macOS"),  QStringLiteral("Finder"),
        QStringLiteral("Spotlight"), QStringLiteral("Launchpad"), QStringLiteral("System Settings"),
        QStringLiteral("DMG"),
    };
    return words;
}
