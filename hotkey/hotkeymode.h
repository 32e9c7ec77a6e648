#pragma once

#include "platform/keys.h"

#include <QList>
#include <QString>

#include <optional>

class SettingsStore;
struct PlatformWords;

// The gesture that opens the search panel, named for what the user presses.
// Stored as the macOS build names them: a double tap of Command
// ("doubleTapCommand", Ctrl here), of Option ("doubleTapOption", Alt here),
// or "customShortcut".
enum class HotkeyMode { doubleTapCtrl, doubleTapAlt, customShortcut };

// In declaration order, the order in which the settings list them.
QList<HotkeyMode> allHotkeyModes();

QString rawValue(HotkeyMode mode);
QString displayName(HotkeyMode mode, const PlatformWords& words);
// The modifier whose double tap activates, none for a custom shortcut.
std::optional<Modifier> watchedModifier(HotkeyMode mode);

// The mode whose raw value is exactly `text`; anything else is the double tap of Ctrl.
HotkeyMode hotkeyModeFromRawValue(const std::optional<QString>& text);

// The mode stored under "hotkeyMode", read by the rule above.
HotkeyMode loadHotkeyMode(const SettingsStore& store);
void saveHotkeyMode(HotkeyMode mode, SettingsStore& store);
