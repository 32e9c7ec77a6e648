#include "base/platformwords.h"

const PlatformWords& PlatformWords::macOS()
{
    static const PlatformWords words{
        .keys =
            {
                .modifiers = {{ModifierRole::control, QStringLiteral("⌃")},
                              {ModifierRole::option, QStringLiteral("⌥")},
                              {ModifierRole::shift, QStringLiteral("⇧")},
                              {ModifierRole::command, QStringLiteral("⌘")}},
                .joiner = QString(),
                .characterKeys = {{0x0003, "⏎"},  {0x0009, "⇥"},  {0x000D, "⏎"},  {0x001B, "⎋"},
                                  {0x0020, "Space"}, {0x007F, "⌫"}, {0xF700, "↑"},  {0xF701, "↓"},
                                  {0xF702, "←"},  {0xF703, "→"},
                                  // Forward delete shares the backward glyph in menus.
                                  {0xF728, "⌫"},  {0xF729, "↖"},  {0xF72B, "↘"},  {0xF72C, "⇞"},
                                  {0xF72D, "⇟"}},
                .virtualKeys = {{36, "⏎"},   {48, "⇥"},   {49, "Space"}, {51, "⌫"},   {53, "⎋"},   {96, "F5"},
                                {97, "F6"},  {98, "F7"},  {99, "F3"},    {100, "F8"}, {101, "F9"}, {103, "F11"},
                                {105, "F13"}, {107, "F14"}, {109, "F10"}, {111, "F12"}, {113, "F15"}, {114, "Help"},
                                {115, "↖"},  {116, "⇞"},  {117, "⌦"},    {118, "F4"}, {119, "↘"},  {120, "F2"},
                                {121, "⇟"},  {122, "F1"}, {123, "←"},    {124, "→"},  {125, "↓"},  {126, "↑"}},
            },
        .doubleTapCommand = QStringLiteral("Double-tap ⌘ Command"),
        .doubleTapOption = QStringLiteral("Double-tap ⌥ Option"),
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
                .modifiers = {{ModifierRole::control, QStringLiteral("Super")},
                              {ModifierRole::command, QStringLiteral("Ctrl")},
                              {ModifierRole::option, QStringLiteral("Alt")},
                              {ModifierRole::shift, QStringLiteral("Shift")}},
                .joiner = QStringLiteral("+"),
                .characterKeys = {{0x0003, "Enter"}, {0x0009, "Tab"},  {0x000D, "Return"}, {0x001B, "Esc"},
                                  {0x0020, "Space"}, {0x007F, "Backspace"}, {0xF700, "↑"}, {0xF701, "↓"},
                                  {0xF702, "←"},     {0xF703, "→"},    {0xF728, "Del"},    {0xF729, "Home"},
                                  {0xF72B, "End"},   {0xF72C, "PgUp"}, {0xF72D, "PgDown"}},
                .virtualKeys = {{36, "Return"}, {48, "Tab"},  {49, "Space"}, {51, "Backspace"}, {53, "Esc"},
                                {96, "F5"},     {97, "F6"},   {98, "F7"},    {99, "F3"},   {100, "F8"},
                                {101, "F9"},    {103, "F11"}, {105, "F13"},  {107, "F14"}, {109, "F10"},
                                {111, "F12"},   {113, "F15"}, {114, "Help"}, {115, "Home"}, {116, "PgUp"},
                                {117, "Del"},   {118, "F4"},  {119, "End"},  {120, "F2"},  {121, "PgDown"},
                                {122, "F1"},    {123, "←"},   {124, "→"},    {125, "↓"},   {126, "↑"}},
            },
        .doubleTapCommand = QStringLiteral("Double-tap Ctrl"),
        .doubleTapOption = QStringLiteral("Double-tap Alt"),
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

const PlatformWords& PlatformWords::current()
{
#ifdef Q_OS_MACOS
    return macOS();
#else
    return linuxDesktop();
#endif
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
