#include "hotkey/customshortcut.h"

#include "base/settingsstore.h"
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

CustomShortcut defaultDesktopShortcut()
{
    return CustomShortcut{49, ModifierFlag::Command | ModifierFlag::Option}; // 49: Space
}

QString desktopShortcutTrigger(const CustomShortcut& shortcut, const KeyboardLayout& layout)
{
    // Keysym names of the keys with a US keyboard position but no character.
    static const QHash<quint16, QString> named{
        {36, "Return"}, {48, "Tab"},     {49, "space"},     {51, "BackSpace"}, {53, "Escape"}, {117, "Delete"},
        {115, "Home"},  {119, "End"},    {116, "Page_Up"},  {121, "Page_Down"}, {123, "Left"}, {124, "Right"},
        {125, "Down"},  {126, "Up"},     {122, "F1"},       {120, "F2"},       {99, "F3"},     {118, "F4"},
        {96, "F5"},     {97, "F6"},      {98, "F7"},        {100, "F8"},       {101, "F9"},    {109, "F10"},
        {103, "F11"},   {111, "F12"},
    };
    static const QHash<QChar, QString> punctuation{
        {u',', "comma"},    {u'.', "period"},       {u'/', "slash"},         {u';', "semicolon"}, {u'\'', "apostrophe"},
        {u'[', "bracketleft"}, {u']', "bracketright"}, {u'-', "minus"},     {u'=', "equal"},     {u'`', "grave"},
        {u'\\', "backslash"},
    };
    QString key = named.value(shortcut.keyCode);
    if (key.isEmpty()) {
        const QString character = layout.characterForKeyCode(shortcut.keyCode).toLower();
        if (character.size() == 1 && character[0].isLetterOrNumber() && character[0].unicode() < 0x80)
            key = character;
        else if (character.size() == 1)
            key = punctuation.value(character[0]);
    }
    if (key.isEmpty())
        return {};
    // Ctrl plays Command's part and Super Control's, as everywhere on Linux.
    QStringList parts;
    if (shortcut.modifiers & ModifierFlag::Command)
        parts << QStringLiteral("CTRL");
    if (shortcut.modifiers & ModifierFlag::Option)
        parts << QStringLiteral("ALT");
    if (shortcut.modifiers & ModifierFlag::Shift)
        parts << QStringLiteral("SHIFT");
    if (shortcut.modifiers & ModifierFlag::Control)
        parts << QStringLiteral("LOGO");
    parts << key;
    return parts.join(u'+');
}
