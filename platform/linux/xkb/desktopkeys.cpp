#include "platform/linux/xkb/desktopkeys.h"

#include "platform/keyboardlayout.h"

#include <QHash>

#include <xkbcommon/xkbcommon.h>

namespace {

QString keysymOfNamed(NamedKey key)
{
    static const QHash<NamedKey, QString> names{
        {NamedKey::returnKey, "Return"}, {NamedKey::enter, "KP_Enter"},   {NamedKey::tab, "Tab"},
        {NamedKey::space, "space"},      {NamedKey::backspace, "BackSpace"}, {NamedKey::deleteForward, "Delete"},
        {NamedKey::escape, "Escape"},    {NamedKey::home, "Home"},        {NamedKey::end, "End"},
        {NamedKey::pageUp, "Page_Up"},   {NamedKey::pageDown, "Page_Down"}, {NamedKey::left, "Left"},
        {NamedKey::right, "Right"},      {NamedKey::up, "Up"},            {NamedKey::down, "Down"},
        {NamedKey::help, "Help"},
    };
    if (const std::optional<int> number = functionNumber(key))
        return QStringLiteral("F%1").arg(*number);
    return names.value(key);
}

QString keysymOfCharacter(const QString& character)
{
    const QList<uint> scalars = character.toLower().toUcs4();
    if (scalars.size() != 1)
        return {};
    const xkb_keysym_t keysym = xkb_utf32_to_keysym(scalars.first());
    char name[64] = {};
    if (keysym == XKB_KEY_NoSymbol || xkb_keysym_get_name(keysym, name, sizeof name) <= 0)
        return {};
    return QString::fromLatin1(name);
}

} // namespace

std::optional<DesktopKeys> DesktopKeys::of(const KeyChord& chord, const KeyboardLayout& layout)
{
    QString keysym;
    if (chord.key.named)
        keysym = keysymOfNamed(*chord.key.named);
    else if (!chord.key.character.isEmpty())
        keysym = keysymOfCharacter(chord.key.character);
    else
        keysym = keysymOfCharacter(layout.characterAt(chord.key.position));
    if (keysym.isEmpty())
        return std::nullopt;
    return DesktopKeys{chord.modifiers, keysym};
}

QString DesktopKeys::portalTrigger() const
{
    QStringList parts;
    for (const auto& [modifier, word] : {std::pair{Modifier::ctrl, "CTRL"}, std::pair{Modifier::alt, "ALT"},
                                         std::pair{Modifier::shift, "SHIFT"}, std::pair{Modifier::super, "LOGO"}}) {
        if (modifiers.testFlag(modifier))
            parts << QString::fromLatin1(word);
    }
    parts << keysym;
    return parts.join(u'+');
}
