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

QString modifierGlyphs(quint64 modifiers)
{
    QString text;
    if (modifiers & ModifierFlag::Control)
        text += u"⌃";
    if (modifiers & ModifierFlag::Option)
        text += u"⌥";
    if (modifiers & ModifierFlag::Shift)
        text += u"⇧";
    if (modifiers & ModifierFlag::Command)
        text += u"⌘";
    return text;
}

QString keyboardLayoutCharacter(quint16 keyCode, const KeyboardLayout& layout)
{
    // A key types at most a few UTF-16 units; more is not a key's text.
    const QString text = layout.characterForKeyCode(keyCode).left(4);
    if (text.isEmpty())
        return QStringLiteral("?");
    return text.toUpper();
}

QString shortcutText(const CustomShortcut& shortcut, const KeyboardLayout& layout)
{
    const std::optional<QString> name = virtualKeyName(shortcut.keyCode);
    return modifierGlyphs(shortcut.modifiers) + (name ? *name : keyboardLayoutCharacter(shortcut.keyCode, layout));
}
