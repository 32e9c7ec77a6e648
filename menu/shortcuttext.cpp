#include "menu/shortcuttext.h"

QString modifierText(Modifiers modifiers, const KeyWords& words)
{
    QString text;
    for (const auto& [modifier, word] : words.modifiers) {
        if (modifiers.testFlag(modifier))
            text += word + words.joiner;
    }
    return text;
}

QString keyName(NamedKey key, const KeyWords& words)
{
    if (const std::optional<int> number = functionNumber(key))
        return QStringLiteral("F%1").arg(*number);
    return words.keyNames.value(key, QStringLiteral("?"));
}

QString shortcutText(const KeyChord& chord, const KeyWords& words, const QString& typed)
{
    QString key;
    if (chord.key.named)
        key = keyName(*chord.key.named, words);
    else if (!chord.key.character.isEmpty())
        key = chord.key.character.toUpper(); // locale-independent, full case mapping (ß → SS)
    else if (!typed.isEmpty())
        key = typed.toUpper();
    else
        key = QStringLiteral("?");
    return modifierText(chord.modifiers, words) + key;
}
