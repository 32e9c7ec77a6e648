#pragma once

#include "platform/keys.h"

#include <QHash>
#include <QList>
#include <QString>

// How a platform writes a keyboard shortcut.
struct KeyWords {
    // The modifiers in the order they are written, each with its word or glyph.
    QList<std::pair<Modifier, QString>> modifiers;
    // Between two modifiers and between the last modifier and the key.
    QString joiner;
    // The keys known by name (function keys aside, which are "F" and their number).
    QHash<NamedKey, QString> keyNames;
};

// The user-visible texts that name a platform's own things. The macOS words
// are the original texts; each other platform says the same in its own terms.
// Both tables sit side by side in platformwords.cpp.
struct PlatformWords {
    KeyWords keys;

    // Activation gestures.
    QString doubleTapCtrl;
    QString doubleTapAlt;

    // Onboarding.
    QString welcomeHint;
    QString permissionMissing;
    QString permissionExplanation;
    QString permissionGranted;
    QString grantPermission;
    QString continueWithoutPermission;

    // Settings and the tray menu.
    QString hideIcon;
    QString hiddenIconNote;
    QString hotkeyInactiveText;
    QString openAccessibilitySettings;
    QString hotkeyInactiveMenuRow;

    // Where the session shows Kestrio no keys (Wayland): the desktop's own
    // shortcut bound to the toggle command. Empty where every key is seen.
    QString toggleCommand;
    QString toggleCommandNote; // precedes the command in the settings
    QString copyCommand;
    QString keysUnavailableTitle;
    QString keysUnavailableText;
    QString keysUnavailableMenuRow;
    QString keysFromDevicesNote;
    QString welcomeHintWithoutKeys;
    // The shortcut the desktop watches for Kestrio.
    QString setUpDesktopShortcut;
    QString removeDesktopShortcut;
    QString desktopShortcutBound; // %1: the keys
    QString desktopShortcutPending;
    QString noDesktopShortcut;
    QString configLineNote; // precedes the line for the compositor's configuration

    // A desktop without a tray.
    QString noTrayTitle;
    QString noTrayText;

    // Self-updater failures that name the release's package.
    QString unpackFailedPrefix; // followed by the tool's output or the reason
    QString bundleMissing;

    // Each table lives as long as the program: whoever shows words keeps a
    // reference to the table the program's root chose.
    static const PlatformWords& macOS();
    static const PlatformWords& linuxDesktop();
};

// Words that only a macOS text may contain; a Linux window showing one of them
// speaks of something that is not there.
const QStringList& macOSOnlyWords();
