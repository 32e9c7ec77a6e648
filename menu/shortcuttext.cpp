#include "menu/shortcuttext.h"

namespace {

// Function-key characters of menus live in the private-use area.
constexpr char32_t kF1Character = 0xF704;
constexpr char32_t kF12Character = 0xF70F;

} // namespace

QString shortcutText(bool control, bool option, bool shift, bool command, const QString& key, const KeyWords& words)
{
    QString text;
    for (const auto& [role, word] : words.modifiers) {
        const bool held = (role == ModifierRole::control && control) || (role == ModifierRole::option && option)
                          || (role == ModifierRole::shift && shift) || (role == ModifierRole::command && command);
        if (held)
            text += word + words.joiner;
    }
    return text + key;
}

std::optional<QString> keyCharacterGlyph(const QString& keyCharacter, const KeyWords& words)
{
    if (keyCharacter.isEmpty())
        return std::nullopt;
    const char32_t scalar = QStringView(keyCharacter).toUcs4().front();
    if (scalar >= kF1Character && scalar <= kF12Character)
        return QStringLiteral("F%1").arg(scalar - (kF1Character - 1));
    if (const auto it = words.characterKeys.constFind(scalar); it != words.characterKeys.constEnd())
        return *it;
    return std::nullopt;
}

std::optional<QString> virtualKeyName(qint64 keyCode, const KeyWords& words)
{
    if (const auto it = words.virtualKeys.constFind(keyCode); it != words.virtualKeys.constEnd())
        return *it;
    return std::nullopt;
}

namespace {

QString menuModifiersAnd(const QString& key, qint64 mask, const KeyWords& words)
{
    return shortcutText(mask & MenuModifier::Control, mask & MenuModifier::Option, mask & MenuModifier::Shift,
                        !(mask & MenuModifier::NoCommand), key, words);
}

} // namespace

QString menuShortcutText(const QString& keyCharacter, qint64 modifierMask, const KeyWords& words)
{
    // toUpper is locale-independent and applies full case mapping (ß → SS).
    return menuModifiersAnd(keyCharacterGlyph(keyCharacter, words).value_or(keyCharacter.toUpper()), modifierMask,
                            words);
}

QString menuShortcutText(qint64 virtualKey, qint64 modifierMask, const KeyWords& words)
{
    return menuModifiersAnd(virtualKeyName(virtualKey, words).value_or(QStringLiteral("?")), modifierMask, words);
}

std::optional<QString> menuShortcutText(const MenuKeyEquivalent& key, const KeyWords& words)
{
    if (key.character && !key.character->isEmpty())
        return menuShortcutText(*key.character, key.modifiers, words);
    if (key.virtualKey)
        return menuShortcutText(*key.virtualKey, key.modifiers, words);
    return std::nullopt;
}
