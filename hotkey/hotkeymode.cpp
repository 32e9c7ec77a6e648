#include "hotkey/hotkeymode.h"

#include "base/platformwords.h"
#include "base/settingsstore.h"

QList<HotkeyMode> allHotkeyModes()
{
    return {HotkeyMode::doubleTapCtrl, HotkeyMode::doubleTapAlt, HotkeyMode::customShortcut};
}

QString rawValue(HotkeyMode mode)
{
    switch (mode) {
    case HotkeyMode::doubleTapAlt: return QStringLiteral("doubleTapOption");
    case HotkeyMode::customShortcut: return QStringLiteral("customShortcut");
    case HotkeyMode::doubleTapCtrl: break;
    }
    return QStringLiteral("doubleTapCommand");
}

QString displayName(HotkeyMode mode, const PlatformWords& words)
{
    switch (mode) {
    case HotkeyMode::doubleTapAlt: return words.doubleTapAlt;
    case HotkeyMode::customShortcut: return QStringLiteral("Custom shortcut");
    case HotkeyMode::doubleTapCtrl: break;
    }
    return words.doubleTapCtrl;
}

std::optional<Modifier> watchedModifier(HotkeyMode mode)
{
    switch (mode) {
    case HotkeyMode::doubleTapCtrl: return Modifier::ctrl;
    case HotkeyMode::doubleTapAlt: return Modifier::alt;
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
    return HotkeyMode::doubleTapCtrl;
}

HotkeyMode loadHotkeyMode(const SettingsStore& store)
{
    return hotkeyModeFromRawValue(store.hotkeyModeText());
}

void saveHotkeyMode(HotkeyMode mode, SettingsStore& store)
{
    store.setString(SettingsKey::hotkeyMode, rawValue(mode));
}
