#pragma once

#include <QPalette>
#include <QString>

// Kestrio's own windows in the theme the user picked: "light", "dark", or
// "system" (anything else), which follows the desktop.
class AppearanceTheme {
public:
    // The palette for a choice; for "system" an empty one, which hands the
    // colours back to the desktop's theme.
    static QPalette palette(const QString& appearance);
    static void apply(const QString& appearance);
};
