#include "hotkey/customshortcut.h"

#include "app/settingsstore.h"
#include "hotkey/hotkeymode.h"
#include "menu/shortcuttext.h"
#include "platform/keyboardlayout.h"

std::optional<CustomShortcut> CustomShortcut::load(const SettingsStore& store)
{
    if (!store.contains(SettingsKey::customHotkeyKeyCode))
        return std::nullopt;
    const qint64 keyCode = store.integerValue(SettingsKey::customHotkeyKeyCode);
    const qint64 modifiers = store.integerValue(SettingsKey::customHotkeyModifiers);
    if (keyCode < 0 || keyCode > 0xFFFF || modifiers < 1)
        return std::nullopt;
    return CustomShortcut{quint16(keyCode), quint64(modifiers)};
}

void CustomShortcut::save(SettingsStore& store) const
{
    store.setInteger(SettingsKey::customHotkeyKeyCode, keyCode & 0xFFFF);
    store.setInteger(SettingsKey::customHotkeyModifiers, qint64(modifiers));
}

size_t qHash(const CustomShortcut& shortcut, size_t seed)
{
    return qHashMulti(seed, shortcut.keyCode, shortcut.modifiers);
}

QString modifierText(quint64 modifiers, const KeyWords& words)
{
    return ::shortcutText(modifiers & ModifierFlag::Control, modifiers & ModifierFlag::Option,
                          modifiers & ModifierFlag::Shift, modifiers & ModifierFlag::Command, QString(), words);
}

QString keyboardLayoutCharacter(quint16 keyCode, const KeyboardLayout& layout)
{
    // A key types at most a few UTF-16 units; more is not a key's text.
    const QString text = layout.characterForKeyCode(keyCode).left(4);
    if (text.isEmpty())
        return QStringLiteral("?");
    return text.toUpper();
}

QString shortcutText(const CustomShortcut& shortcut, const KeyboardLayout& layout, const KeyWords& words)
{
    const std::optional<QString> name = virtualKeyName(shortcut.keyCode, words);
    return modifierText(shortcut.modifiers, words) + (name ? *name : keyboardLayoutCharacter(shortcut.keyCode, layout));
}
