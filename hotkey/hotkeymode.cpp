#include "hotkey/hotkeymode.h"

#include "base/platformwords.h"
#include "base/settingsstore.h"

QList<HotkeyMode> allHotkeyModes()
{
    return {HotkeyMode::doubleTapCommand, HotkeyMode::doubleTapOption, HotkeyMode::customShortcut};
}

QString rawValue(HotkeyMode mode)
{
    switch (mode) {
    case HotkeyMode::doubleTapOption: return QStringLiteral("doubleTapOption");
    case HotkeyMode::customShortcut: return QStringLiteral("customShortcut");
    case HotkeyMode::doubleTapCommand: break;
    }
    return QStringLiteral("doubleTapCommand");
}

QString displayName(HotkeyMode mode)
{
    switch (mode) {
    case HotkeyMode::doubleTapOption: return PlatformWords::current().doubleTapOption;
    case HotkeyMode::customShortcut: return QStringLiteral("Custom shortcut");
    case HotkeyMode::doubleTapCommand: break;
    }
    return PlatformWords::current().doubleTapCommand;
}

std::optional<quint64> watchedModifier(HotkeyMode mode)
{
    switch (mode) {
    case HotkeyMode::doubleTapCommand: return ModifierFlag::Command;
    case HotkeyMode::doubleTapOption: return ModifierFlag::Option;
    case HotkeyMode::customShortcut: break;
    }
    return std::nullopt;
}

HotkeyMode hotkeyModeFromRawValue(const std::optional<QString>& text)
{
    for (HotkeyMode mode : allHotkeyModes()) {
        if (text == rawValue(mode))
            return mode;
    }
    return HotkeyMode::doubleTapCommand;
}

HotkeyMode loadHotkeyMode(const SettingsStore& store)
{
    return hotkeyModeFromRawValue(store.hotkeyModeText());
}

void saveHotkeyMode(HotkeyMode mode, SettingsStore& store)
{
    store.setString(SettingsKey::hotkeyMode, rawValue(mode));
}
