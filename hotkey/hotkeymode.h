#pragma once

#include <QList>
#include <QString>

#include <optional>

class SettingsStore;

// Device-independent modifier flag bits of key events and custom shortcuts.
namespace ModifierFlag {
inline constexpr quint64 CapsLock = 0x10000;
inline constexpr quint64 Shift = 0x20000;
inline constexpr quint64 Control = 0x40000;
inline constexpr quint64 Option = 0x80000;
inline constexpr quint64 Command = 0x100000;
inline constexpr quint64 NumericPad = 0x200000;
inline constexpr quint64 Help = 0x400000;
inline constexpr quint64 Function = 0x800000;
// The four that shortcuts are made of.
inline constexpr quint64 Mask = Shift | Control | Option | Command;
} // namespace ModifierFlag

// The gesture that opens the search panel.
enum class HotkeyMode { doubleTapCommand, doubleTapOption, customShortcut };

// In declaration order, the order in which the settings list them.
QList<HotkeyMode> allHotkeyModes();

QString rawValue(HotkeyMode mode);
QString displayName(HotkeyMode mode);
// The modifier whose double tap activates, none for a custom shortcut.
std::optional<quint64> watchedModifier(HotkeyMode mode);

// The mode whose raw value is exactly `text`; anything else is double-tap Command.
HotkeyMode hotkeyModeFromRawValue(const std::optional<QString>& text);

// The mode stored under "hotkeyMode", read by the rule above.
HotkeyMode loadHotkeyMode(const SettingsStore& store);
void saveHotkeyMode(HotkeyMode mode, SettingsStore& store);
